// A model's "metadata.json" from anywhere: it is read, or refused with one of the reader's exceptions.
#include <cstdint>
#include <string>

#include <cereal/details/helpers.hpp>

#include "check.hpp"
#include "qel/inference/metadata.hpp"
#include "qel/serialize/json_input.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    qel::inference::Metadata metadata;
    try {
        qel::serialize::JsonInput input(std::string(reinterpret_cast<char const*>(data), size));
        metadata.Serialize(input.GetArchive());
    } catch (cereal::Exception const&) {
        qel::fuzz::Check(metadata.GetMaxBatchSize() == 0 && metadata.GetBackendLoadingPriority() == 0 &&
                             metadata.GetVersion().empty(),
                         "something is left of metadata that was refused");
    }
    return 0;
}
