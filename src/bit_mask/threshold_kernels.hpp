#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::bit_mask {

/// Packs the pixels of one row above the threshold into (width + 31) / 32 words, padding cleared.
using ThresholdKernel = void (*)(std::uint8_t const* pixels, std::size_t width, std::uint8_t threshold,
                                 std::uint32_t* words);

/// The packing for one instruction set.
struct NamedThresholdKernel {
    char const* name;
    ThresholdKernel pack;
};

/// Those this machine can run, the fastest last.
boost::span<NamedThresholdKernel const> GetSupportedThresholdKernels();

/// The fastest of them, chosen once.
ThresholdKernel GetThresholdKernel();

}  // namespace qel::algorithm::bit_mask
