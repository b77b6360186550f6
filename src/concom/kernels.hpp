#pragma once

#include <boost/core/span.hpp>

#include "concom/label_bulk.hpp"
#include "concom/label_runs.hpp"
#include "concom/row_edges.hpp"

namespace qel::algorithm::concom {

/// The loops of labelling for one instruction set.
struct Kernels {
    char const* name;
    /// The number of words before the first that is not zero, rounded down, or count.
    std::size_t (*skipZeros)(std::uint32_t const* words, std::size_t count);
    EdgeScan scanEdges;
    EdgeScan scanEdgesAndCount;
    void (*labelRuns4Way)(MaskRows& rows);
    void (*labelRuns8Way)(MaskRows& rows);
    void (*labelBulk4Way)(MaskRows& rows);
    void (*labelBulk8Way)(MaskRows& rows);
};

/// Those this machine can run, the fastest last.
boost::span<Kernels const> GetSupportedKernels();

/// The fastest of them, chosen once.
Kernels const& GetKernels();

}  // namespace qel::algorithm::concom
