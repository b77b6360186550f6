#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::bit_mask {

/// Combines count words of others into words.
using CombineKernel = void (*)(std::uint32_t* words, std::uint32_t const* others, std::size_t count);

/// The Boolean combinations for one instruction set.
struct CombineKernels {
    char const* name;
    CombineKernel unite;
    CombineKernel subtract;
    CombineKernel intersect;
};

/// Those this machine can run, the fastest last.
boost::span<CombineKernels const> GetSupportedCombineKernels();

/// The fastest of them, chosen once.
CombineKernels const& GetCombineKernels();

}  // namespace qel::algorithm::bit_mask
