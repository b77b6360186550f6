#pragma once

#include <cstddef>
#include <cstdint>

#include "concom/lanes.hpp"

namespace qel::algorithm::concom {

/// Entries that an EdgeScan may write behind the last edge.
constexpr std::size_t EdgeSlack = 64;
/// Lanes that it may write behind the last of the row.
constexpr std::size_t LaneSlack = 8;

/// Where an EdgeScan writes.
struct RowEdges {
    std::uint32_t* edges;  ///< room for width + EdgeSlack entries
    Lane* ends;            ///< this and the two below: LaneSlack more than the row's lanes
    Lane* aboveEnds;       ///< read: what ends holds for the row above
    std::uint32_t* ranks;  ///< for each lane, the bits in the lanes of aboveEnds before it
};

/// Writes the columns at which the row's runs of set pixels begin and end (the end exclusive), in turn, and returns
/// where it stopped; sets bits in ends at the columns where they end, but for the width, and clears the others. width
/// is the row's number of pixels; padding is masked away. Those that count, too, write the ranks of lanes in which runs
/// begin.
using EdgeScan = std::uint32_t* (*)(std::uint32_t const* words, unsigned int width, RowEdges const& row);

std::uint32_t* ScanEdgesPlain(std::uint32_t const* words, unsigned int width, RowEdges const& row);
std::uint32_t* ScanEdgesAndCountPlain(std::uint32_t const* words, unsigned int width, RowEdges const& row);
#if defined(__x86_64__)
std::uint32_t* ScanEdgesAvx2(std::uint32_t const* words, unsigned int width, RowEdges const& row);
std::uint32_t* ScanEdgesAndCountAvx2(std::uint32_t const* words, unsigned int width, RowEdges const& row);
std::uint32_t* ScanEdgesAvx512(std::uint32_t const* words, unsigned int width, RowEdges const& row);
std::uint32_t* ScanEdgesAndCountAvx512(std::uint32_t const* words, unsigned int width, RowEdges const& row);
#endif

}  // namespace qel::algorithm::concom
