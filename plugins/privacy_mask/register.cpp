#include "qel/algorithm/video/registry/register.hpp"

#include <memory>

#include "privacy_mask.hpp"
#include "qel/algorithm/video/registry/property.hpp"

namespace qel::privacy_mask {
namespace {

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered =
    algorithm::video::registry::Register({hash::MurmurThree32(TypeName), TypeName,
                                          [](inference::backend::Manager&) { return std::make_shared<PrivacyMask>(); },
                                          Properties, algorithm::video::registry::CreateNodes(Properties)});

}  // namespace
}  // namespace qel::privacy_mask
