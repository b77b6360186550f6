#include "qel/inference/metadata.hpp"

#include <utility>

#include <cereal/archives/json.hpp>

namespace qel::inference {
namespace {

template <class T>
T Read(cereal::JSONInputArchive& archive, char const* name) {
    T value{};
    archive(cereal::make_nvp(name, value));
    return value;
}

template <class T>
T ReadOr(cereal::JSONInputArchive& archive, char const* name, T otherwise) {
    try {
        return Read<T>(archive, name);
    } catch (cereal::Exception const&) {
        return otherwise;
    }
}

}  // namespace

Metadata::Metadata() = default;

Metadata::~Metadata() = default;

void Metadata::Serialize(cereal::JSONInputArchive& archive) {
    auto const maxBatchSize = Read<std::uint32_t>(archive, "max_batch_size");
    auto const backendLoadingPriority = ReadOr<std::int32_t>(archive, "backend_loading_priority", 0);
    auto version = ReadOr<std::string>(archive, "version", "unknown");
    // All or nothing: memory may have been missing for any of them.
    maxBatchSize_ = maxBatchSize;
    backendLoadingPriority_ = backendLoadingPriority;
    version_.swap(version);
}

}  // namespace qel::inference
