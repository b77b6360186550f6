#pragma once

#include <cstdint>
#include <vector>

#include "memory_file.hpp"

namespace qel::inference {

/// Has another process load the bytes of a model and run it on zeros, in batches of one and, where maxBatchSize allows,
/// of two: back ends do not expect files that mean harm, and what they die of shall not be this process.
///
/// inputShape: as in OnnxGraph; where an axis other than the first is open, the model is loaded only.
/// cancel: a descriptor; as soon as there is something to be read from it, the trial ends.
/// Throws std::runtime_error with the reason when the model does not pass, takes longer than two minutes, or the trial
/// is cancelled.
void TryModel(MemoryFile const& model, std::vector<std::size_t> const& inputShape, std::uint32_t maxBatchSize,
              int cancel);

}  // namespace qel::inference
