#include "qel/algorithm/video/registry/register.hpp"

#include <memory>

#include "motion.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/video/registry/publish.hpp"

namespace qel::motion {
namespace {

namespace registry = algorithm::video::registry;
namespace model = inference::model;

/// It needs no model, so nothing is left to load.
std::shared_ptr<algorithm::info::Base> Describe(configuration::Node& root) {
    return std::make_shared<algorithm::info::ObjectClassifier>(
        root, "motion", "Motion", std::set<std::string>{Label},
        model::State(model::LoadingStatus::Loaded, model::BuildingStatus::Ended), QEL_VERSION);
}

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered = registry::Register(
    {hash::MurmurThree32(TypeName), TypeName, [](inference::backend::Manager&) { return std::make_shared<Motion>(); },
     Properties, registry::CreateNodes(Properties, Describe)});

}  // namespace
}  // namespace qel::motion
