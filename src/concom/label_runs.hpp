#pragma once

#include "concom/mask_rows.hpp"

namespace qel::algorithm::concom {

/// Labels a run that sees several segments: from next on, those that begin left of the run's end, or at it where
/// diagonal neighbours count. label is what the first pixel took. Returns where the row's next segment goes.
template <std::uint32_t CombineBlob>
Segment* LabelJoiningRun(MaskRows& rows, Segment const* next, std::uint32_t first, std::uint32_t end,
                         std::uint32_t label, Segment* out);

/// Labels run by run: rows up to the last, but stops behind a row without runs and before one for which there may be
/// no room.
template <std::uint32_t CombineBlob, EdgeScan Scan>
[[gnu::always_inline]] inline void LabelRuns(MaskRows& rows) {
    bool empty = false;
    while (rows.y != rows.last && !empty && rows.room - rows.records.count >= rows.CountNewRecords()) {
        std::uint32_t const* const edgesEnd = rows.edgesEnd =
            Scan(rows.words + rows.y * rows.stride, rows.width, rows.scan);
        std::uint32_t const y = static_cast<std::uint32_t>(rows.y);
        Lane const* const ends = rows.scan.aboveEnds;
        std::uint32_t const* const ranks = rows.scan.ranks;
        Segment const* const segments = rows.above;
        InternalBlob* const blobs = rows.records.blobs;
        FirstPixel* const firsts = rows.records.firsts;
        std::uint32_t count = rows.started = rows.records.count;
        Segment* out = rows.current;
        for (std::uint32_t const* edge = rows.scan.edges; edge != edgesEnd; edge += 2) {
            std::uint32_t const first = edge[0];
            std::uint32_t const end = edge[1];
            // How many segments above end too far left to be seen is counted, not searched: nothing to foresee.
            Lane const passed = ends[first / 64] >> CombineBlob >> (~first & 63U);
            Segment const* const above =
                segments + (ranks[first / 64] + static_cast<std::uint64_t>(std::popcount(passed)));
            // Whether anything stands above the first pixel cannot be foreseen either: no branch, but all ones or
            // none. A record that is started for nothing is started again by the next run.
            std::int64_t const fresh = -static_cast<std::int64_t>(above->first > first + CombineBlob);
            auto const chosen = static_cast<std::uint32_t>(fresh);
            std::uint32_t const label = (count & chosen) | (above->label & ~chosen);
            firsts[count] = {first, y};
            count -= chosen;
            Segment const* const next = above + 1 + fresh;
            if (next->first < end + CombineBlob) [[unlikely]] {
                out = LabelJoiningRun<CombineBlob>(rows, next, first, end, label, out);
            } else {
                BlobRecords::UpdateBlob(blobs[label], end - first, first, end, y);
                *out++ = {first, label};
            }
        }
        empty = out == rows.current;
        out[0] = out[1] = Guard;
        rows.records.count = count;
        std::swap(rows.scan.aboveEnds, rows.scan.ends);
        rows.Advance();
    }
}

}  // namespace qel::algorithm::concom
