#pragma once

#include <cstddef>
#include <string_view>

namespace qel::serialize {

/// At most how many bytes the archives' reader takes for a text, which has been checked, and its document.
std::size_t EstimateReaderMemory(std::string_view text) noexcept;

/// Throws std::bad_alloc when there is not enough memory for the reader, which does not look whether it got any.
///
/// The memory is free again when this returns: what other threads take in between may still be missing to the reader.
void CheckReaderMemory(std::string_view text);

}  // namespace qel::serialize
