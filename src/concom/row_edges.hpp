#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/core/span.hpp>

namespace qel::algorithm::concom {

/// Entries that an EdgeScan may write behind the last edge.
constexpr std::size_t EdgeSlack = 64;

/// Writes the columns at which the row's runs of set pixels begin and end (the end exclusive), in turn, and returns
/// where it stopped. width is the row's number of pixels; padding is masked away.
/// edges has room for width + EdgeSlack entries.
using EdgeScan = std::uint32_t* (*)(std::uint32_t const* words, unsigned int width, std::uint32_t* edges);

/// A scan for one instruction set.
struct NamedEdgeScan {
    char const* name;
    EdgeScan scan;
};

/// Those this machine can run, the fastest last.
boost::span<NamedEdgeScan const> GetSupportedEdgeScans();

/// The fastest of them, chosen once.
EdgeScan GetEdgeScan();

}  // namespace qel::algorithm::concom
