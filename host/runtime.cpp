#include "runtime.hpp"

#include <exception>
#include <utility>

#include <boost/filesystem/operations.hpp>

#include "catalogue.hpp"
#include "error.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/registry/publish.hpp"
#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/find_file.hpp"

namespace qel::host {
namespace {

namespace registry = algorithm::video::registry;
using configuration::node::Map;
using configuration::node::Option;

// Everything that is published is made anew at each start, and only read by others.
constexpr configuration::node::Options Published{Option::Transient, Option::ReadOnly};

std::unique_ptr<inference::backend::Manager> MakeManager(boost::filesystem::path const& models) {
    if (models.empty()) return std::make_unique<inference::backend::Manager>();
    boost::system::error_code ignored;
    if (!boost::filesystem::is_directory(models, ignored)) {
        throw UsageError("'" + models.string() + "' is no folder of models");
    }
    return std::make_unique<inference::backend::Manager>(models);
}

}  // namespace

Runtime::Runtime(boost::filesystem::path const& models, Warn warn) : Runtime(MakeManager(models), std::move(warn)) {}

Runtime::Runtime(std::unique_ptr<inference::backend::Manager> manager, Warn warn)
    : warn_(std::move(warn)),
      root_(Map::Make("")),
      algorithms_(Map::Make("algorithms")),
      descriptors_(Map::Make("info", "Information about the algorithms", Published)),
      manager_(std::move(manager)) {
    algorithms_->Insert(descriptors_);
    root_->Insert(algorithms_);
}

std::shared_ptr<Map> Runtime::MakeConfiguration(registry::Info const& info) {
    auto& map = configurations_[info.GetTypeNameId()];
    if (!map) map = MakeMap(info.GetTypeName());
    try {
        info.CreateConfigNodes(*manager_, map);
    } catch (registry::PublishError const& error) {
        Warning(info, std::string("cannot publish its descriptor: ") + error.what());
    }
    return map;
}

std::shared_ptr<Map> Runtime::FindConfiguration(hash::MurmurThree32 id) const {
    auto const found = configurations_.find(id);
    return found == configurations_.end() ? nullptr : found->second;
}

std::shared_ptr<Map> Runtime::MakeOwnConfiguration(hash::MurmurThree32 id) const {
    auto const common = FindConfiguration(id);
    if (!common) throw Error("there is no configuration of such an algorithm");
    auto map = Map::Make(common->GetName(), common->GetDescription(), common->GetOptions());
    auto const algorithms = registry::Get().GetMap();
    // Nothing is published for a map that stands alone.
    algorithms->at(id).CreateConfigNodes(*manager_, map);
    return map;
}

void Runtime::MakeConfigurations() {
    auto const algorithms = registry::Get().GetMap();
    for (auto const& [id, info] : *algorithms) {
        try {
            (void)MakeConfiguration(info);
        } catch (std::exception const& error) {
            Warning(info, error.what());
        }
    }
}

std::shared_ptr<Map> Runtime::MakeMap(std::string const& typeName) {
    std::string const shortName(GetShortName(typeName));
    auto map = Map::Make(algorithms_->Find(shortName) ? typeName : shortName, "Properties of " + typeName);
    algorithms_->Insert(map);
    return map;
}

void Runtime::Warning(registry::Info const& info, std::string const& problem) const {
    if (!warn_) return;
    // The name is a literal of the plug-in: where it lies tells the file.
    warn_(system::plugin::FindFile(info.GetTypeName()).string() + ": " + info.GetTypeName() + ": " + problem);
}

boost::filesystem::path FindModels() {
    boost::system::error_code ignored;
    auto folder = system::GetLibraryPath("qel_algorithm").parent_path();
    // Libraries lie in lib, or in lib/<architecture>.
    for (int up = 0; up < 3 && !folder.empty(); ++up, folder = folder.parent_path()) {
        auto models = folder.parent_path() / "share" / "qel" / "models";
        if (boost::filesystem::is_directory(models, ignored)) return models;
    }
    return {};
}

}  // namespace qel::host
