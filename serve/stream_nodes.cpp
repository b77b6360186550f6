#include "stream_nodes.hpp"

#include "qel/configuration/node/vector.hpp"

namespace qel::serve {

using configuration::Schema;
using configuration::node::Map;

StreamNodes StreamNodes::Make(std::string const& id) {
    StreamNodes nodes{Map::Make(id, "A video and what is looked for in it"),
                      Map::Make("settings",
                                "Settings of its algorithms in this stream; what is not set here follows those of the "
                                "algorithm")};
    nodes.map->Schema({Schema("source", "A file, or a URI such as rtsp://camera/stream", ""),
                       Schema("loop", "Whether a file begins anew when it ends", false),
                       Schema("enabled", "Whether the stream runs", true)});
    nodes.map->Insert(configuration::node::Vector::Make("algorithms", "Its algorithms in the order in which they run",
                                                        {}, Schema("algorithms[*]", "The name of an algorithm", "")));
    nodes.map->Schema({Schema("calibration", "The file of the camera's calibration; empty for none", "")});
    nodes.map->Insert(nodes.settings);
    return nodes;
}

StreamNodes StreamNodes::Find(Map const& streams, std::string_view id) {
    auto const map = FindChild(streams, id);
    return {map, map ? FindChild(*map, "settings") : nullptr};
}

std::shared_ptr<Map> StreamNodes::FindChild(Map const& map, std::string_view name) {
    for (auto const& child : map.GetChildren()) {
        if (child->GetName() == name) return std::dynamic_pointer_cast<Map>(child);
    }
    return nullptr;
}

}  // namespace qel::serve
