#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::bit_mask {

/// Combines three bands of rows x words words, each with its horizontal neighbours, into out.
/// Words before the first and after the last of a row count as zero. out must not overlap the bands; they may be
/// the same.
using RowKernel = void (*)(std::uint32_t const* above, std::uint32_t const* row, std::uint32_t const* below,
                           std::uint32_t* out, std::size_t rows, std::size_t words);

/// The word loops of dilation and erosion for one instruction set.
struct RowKernels {
    char const* name;
    RowKernel dilate;
    RowKernel erode;
};

/// Those this machine can run, the fastest last.
boost::span<RowKernels const> GetSupportedRowKernels();

/// The fastest of them, chosen once.
RowKernels const& GetRowKernels();

}  // namespace qel::algorithm::bit_mask
