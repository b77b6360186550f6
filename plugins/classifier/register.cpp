#include "qel/algorithm/video/registry/register.hpp"

#include <memory>

#include "classifier.hpp"

namespace qel::classifier {
namespace {

namespace registry = algorithm::video::registry;

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered =
    registry::Register({hash::MurmurThree32(TypeName), TypeName,
                        [](inference::backend::Manager& manager) { return std::make_shared<Classifier>(manager); },
                        Properties, CreateNodes});

}  // namespace
}  // namespace qel::classifier
