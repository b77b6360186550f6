#include "catalogue.hpp"

#include <algorithm>
#include <exception>
#include <memory>
#include <new>

#include <boost/json.hpp>

#include "error.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/type.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/system/plugin/find_file.hpp"
#include "qel/type/to_string.hpp"
#include "text.hpp"

namespace qel::host {
namespace {

namespace video = algorithm::video;

AlgorithmDescription Describe(video::registry::Info const& info, Runtime& runtime) {
    AlgorithmDescription description;
    description.typeName = info.GetTypeName();
    // The name is a literal of the plug-in: where it lies tells the file.
    description.file = system::plugin::FindFile(info.GetTypeName()).string();
    try {
        auto const algorithm = info.GetMake()(runtime.GetManager());
        if (!algorithm) throw Error("its factory gives nothing");
        description.kind = GetKind(*algorithm);
        for (media::ColourFormat const format : algorithm->GetSupportedColourFormats()) {
            description.colourFormats.push_back(type::ToString(format));
        }
        // A map that stands alone: a list needs nothing published, and no warning of models that are missing.
        auto const map = configuration::node::Map::Make(std::string(GetShortName(info.GetTypeName())));
        info.CreateConfigNodes(runtime.GetManager(), map);
        boost::json::value const schema = boost::json::parse(configuration::json::Schema(*map));
        if (auto const* const properties = schema.as_object().if_contains("properties")) {
            description.properties = properties->as_object();
        }
    } catch (std::bad_alloc const&) {
        throw;  // not the algorithm's problem
    } catch (std::exception const& error) {
        description.problem = error.what();
    }
    return description;
}

struct Known {
    std::string typeName;
    hash::MurmurThree32 id;
};

std::vector<Known> ListKnown() {
    std::vector<Known> known;
    {
        auto const map = video::registry::Get().GetMap();
        for (auto const& [id, info] : *map) known.push_back({info.GetTypeName(), id});
    }
    std::sort(known.begin(), known.end(), [](Known const& a, Known const& b) { return a.typeName < b.typeName; });
    return known;
}

std::vector<std::string> GetNames(std::vector<Known> const& known) {
    std::vector<std::string> names;
    for (Known const& entry : known) names.push_back(entry.typeName);
    return names;
}

}  // namespace

char const* const NoAlgorithm =
    "no algorithm is installed: no plug-in libqel_algorithm_*.so lies beside libqel_algorithm.so; --plugins names a "
    "folder of others";

std::vector<std::string> ListAlgorithms() { return GetNames(ListKnown()); }

std::string_view GetShortName(std::string_view typeName) noexcept { return typeName.substr(typeName.rfind('.') + 1); }

std::string GetKind(video::Algorithm const& algorithm) {
    video::Type const type = algorithm.Is<video::inplace::Algorithm>()       ? video::Type::Inplace
                             : algorithm.Is<video::passthrough::Algorithm>() ? video::Type::Passthrough
                                                                             : video::Type::Transform;
    return type::ToString(type);
}

std::vector<AlgorithmDescription> DescribeAlgorithms(Runtime& runtime) {
    std::vector<AlgorithmDescription> descriptions;
    {
        auto const map = video::registry::Get().GetMap();
        for (auto const& [id, info] : *map) descriptions.push_back(Describe(info, runtime));
    }
    std::sort(descriptions.begin(), descriptions.end(),
              [](auto const& left, auto const& right) { return left.typeName < right.typeName; });
    return descriptions;
}

hash::MurmurThree32 FindAlgorithm(std::string_view name) {
    std::vector<Known> const known = ListKnown();
    if (known.empty()) throw UsageError(NoAlgorithm);
    std::vector<Known> meant;
    for (Known const& entry : known) {
        if (entry.typeName == name) return entry.id;
        if (IsSameName(entry.typeName, name) || IsSameName(GetShortName(entry.typeName), name)) {
            meant.push_back(entry);
        }
    }
    if (meant.size() == 1) return meant.front().id;
    if (meant.empty()) {
        throw UsageError("unknown algorithm '" + std::string(name) + "' (known: " + Join(GetNames(known)) + ")");
    }
    throw UsageError("'" + std::string(name) + "' may mean several algorithms: " + Join(GetNames(meant)));
}

}  // namespace qel::host
