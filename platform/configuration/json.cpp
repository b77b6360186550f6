#include "qel/configuration/json.hpp"

#include <new>
#include <sstream>

#include <cereal/archives/json.hpp>

#include "qel/configuration/node/map.hpp"
#include "qel/serialize/json_input.hpp"

namespace qel::configuration::json {

namespace {

std::string NameOf(Node const& node) { return node.GetName().empty() ? "value" : node.GetName(); }

template <class Write>
std::string ToText(Write const& write) {
    std::ostringstream stream;
    {
        cereal::JSONOutputArchive archive(stream, cereal::JSONOutputArchive::Options::NoIndent());
        try {
            write(archive);
        } catch (...) {
            // The archive's destructor ends the object that it stands in, and the process when there was no memory to
            // begin it. It ends no list that has not begun.
            archive.makeArray();
            throw;
        }
    }
    // Streams keep it to themselves that they found no memory.
    if (!stream) throw std::bad_alloc();
    std::string text = stream.str();
    // The archive ends each member's line; within texts it escapes the ends of lines.
    std::erase(text, '\n');
    return text.empty() ? "{}" : text;
}

}  // namespace

std::string Data(Node const& node) {
    std::string const name = NameOf(node);
    return ToText([&](cereal::JSONOutputArchive& archive) {
        if (!node.Is<node::Map>()) archive.setNextName(name.c_str());
        node.Data(archive);
    });
}

std::string Defaults(Node const& node) {
    std::string const name = NameOf(node);
    return ToText([&](cereal::JSONOutputArchive& archive) {
        if (!node.Is<node::Map>()) archive.setNextName(name.c_str());
        node.Defaults(archive);
    });
}

std::string Schema(Node const& node) {
    return ToText([&](cereal::JSONOutputArchive& archive) { node.Schema(archive); });
}

std::vector<std::shared_ptr<Node>> Stage(Node& node, std::string const& text) {
    std::vector<std::shared_ptr<Node>> changed;
    std::string const name = NameOf(node);
    serialize::JsonInput input(text);
    if (!node.Is<node::Map>()) input.GetArchive().setNextName(name.c_str());
    node.StageData(input.GetArchive(), changed);
    return changed;
}

}  // namespace qel::configuration::json
