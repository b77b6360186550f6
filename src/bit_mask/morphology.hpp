#pragma once

#include <cstddef>
#include <cstdint>

#include "bit_mask/row_kernels.hpp"

namespace qel::algorithm::bit_mask {

/// Dilate8Way and Erode8Way by the given kernels.
void Dilate(RowKernels const& kernels, std::uint32_t const* src, std::uint32_t* dst, std::size_t rows,
            std::size_t words);
void Erode(RowKernels const& kernels, std::uint32_t const* src, std::uint32_t* dst, std::size_t rows,
           std::size_t words);

/// Writes one output row from Count adjacent input rows and moves src and dst on by one row each.
template <std::size_t Count>
void DilateRow(std::uint32_t const*& src, std::uint32_t*& dst, std::size_t words);

/// From src and the row after it.
template <>
void DilateRow<2>(std::uint32_t const*& src, std::uint32_t*& dst, std::size_t words);

}  // namespace qel::algorithm::bit_mask
