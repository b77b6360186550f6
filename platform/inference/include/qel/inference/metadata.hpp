#pragma once

#include <cstdint>
#include <string>

#include "qel/inference/export.hpp"

namespace cereal {

class JSONInputArchive;

}  // namespace cereal

namespace qel::inference {

/// What the file "metadata.json" beside a model says of it. One thread at a time.
class QEL_INFERENCE_EXPORT Metadata {
public:
    /// Nothing is known: zeros and an empty version.
    Metadata();
    ~Metadata();

    /// Reads "max_batch_size", "backend_loading_priority" and "version", in this order, from the archive's object.
    /// A priority that is missing or no 32-bit integer is 0, a version that is missing or no text is "unknown". Throws
    /// cereal::Exception, with nothing changed, when the batch size is missing or no unsigned 32-bit integer.
    void Serialize(cereal::JSONInputArchive& archive);

    /// The number of images that the model takes at once.
    std::uint32_t GetMaxBatchSize() const noexcept { return maxBatchSize_; }
    /// Models of higher priority are loaded first.
    std::int32_t GetBackendLoadingPriority() const noexcept { return backendLoadingPriority_; }
    std::string const& GetVersion() const noexcept { return version_; }

private:
    std::uint32_t maxBatchSize_ = 0;
    std::int32_t backendLoadingPriority_ = 0;
    std::string version_;
};

}  // namespace qel::inference
