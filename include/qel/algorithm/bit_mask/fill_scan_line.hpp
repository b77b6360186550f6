#pragma once

#include <cstdint>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::bit_mask {

/// Sets (value != 0) or clears columns first to last, both inclusive, of one mask row; keeps the others.
/// row: the row's first word. Requires first <= last < 32 * stride; not checked.
QEL_ALGORITHM_EXPORT void FillScanLine(std::uint32_t* row, unsigned int first, unsigned int last, unsigned int value);

}  // namespace qel::algorithm::bit_mask
