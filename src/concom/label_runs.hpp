#pragma once

#include <algorithm>
#include <cstring>

#include "concom/mask_rows.hpp"

namespace qel::algorithm::concom {

/// Labels a run that sees several segments: from next on, those that begin left of the run's end, or at it where
/// diagonal neighbours count. label is what the first pixel took. Returns where the row's next segment goes.
template <std::uint32_t CombineBlob>
[[gnu::always_inline]] inline Segment* LabelJoiningRun(MaskRows& rows, Segment const* next, std::uint32_t first,
                                                       std::uint32_t end, std::uint32_t label, Segment* out) {
    BlobRecords& records = rows.records;
    auto const y = static_cast<std::uint32_t>(rows.y);
    // Pixels of merged records that are still to be counted on label, together with the run's.
    std::uint32_t takenOver = 0;
    do {
        if (next->label == label) continue;
        std::uint32_t const column = std::max(first, next->first - CombineBlob);
        std::uint32_t const root = records.FindRoot(label);
        std::uint32_t const other = records.FindRoot(next->label);
        // Where the run's label is the root that survives nothing changes at the column: not one segment more for the
        // rows below to see. Neither branch nor count can be foreseen, so there is one branch for both.
        if ((std::min(root, other) != label) & (column > first)) {
            // Counted before the merge: it takes over what has been counted, and nothing later.
            records.blobs[label].Count(column - first + takenOver, first, column, y);
            takenOver = 0;
            *out++ = {first, column, label};
            rows.scan.ends[column / 64] |= ColumnBit(column);
            first = column;
        }
        label = std::min(root, other);
        if (root != other) takenOver += records.Join(std::max(root, other), label);
    } while ((++next)->first < end + CombineBlob);
    records.blobs[label].Count(end - first + takenOver, first, end, y);
    *out++ = {first, end, label};
    return out;
}

using JoiningRun = Segment* (*)(MaskRows&, Segment const*, std::uint32_t, std::uint32_t, std::uint32_t, Segment*);

/// In rows of fewer edges it does not pay to count what ends above, or to look ahead: what a run sees is searched for.
constexpr std::ptrdiff_t FewEdges = 16;

/// Labels the runs of one row, each by itself; those that see several segments by a function of their own, lest they
/// take registers from the others.
template <std::uint32_t CombineBlob, JoiningRun LabelJoining>
class RunRow {
public:
    [[gnu::always_inline]] explicit RunRow(MaskRows& rows) : rows_(rows) {}

    /// counted: whether the ranks have been.
    [[gnu::always_inline]] void Label(bool counted) {
        std::uint32_t* const edges = rows_.scan.edges;
        std::uint32_t* const end = rows_.edgesEnd;
        if (!counted || end - edges < FewEdges) {
            Segment const* seen = above_;
            for (std::uint32_t const* edge = edges; edge != end; edge += 2) {
                while (seen->end + CombineBlob <= edge[0]) ++seen;
                LabelRun(edge, seen);
            }
        } else {
            // Two runs ahead it is found what a run sees: a processor looks at no more than two or three runs at once,
            // which is not enough to hide how long that takes.
            end[0] = end[2] = 0;
            Segment const* seen = FindSeen(edges[0]);
            Segment const* nextSeen = FindSeen(edges[2]);
            for (std::uint32_t const* edge = edges; edge != end; edge += 2) {
                Segment const* const secondNextSeen = FindSeen(edge[4]);
                LabelRun(edge, seen);
                seen = nextSeen;
                nextSeen = secondNextSeen;
            }
        }
        out_[0] = out_[1] = Guard;
        rows_.records.count = count_;
    }

    /// Whether the row has no runs.
    [[gnu::always_inline]] bool IsEmpty() const { return out_ == rows_.current; }

private:
    /// The first segment above that does not end too far left to be seen from a column. How many do is counted, not
    /// searched: nothing to foresee.
    [[gnu::always_inline]] Segment const* FindSeen(std::uint32_t column) const {
        Lane const passed = ends_[column / 64] >> CombineBlob >> (~column & 63U);
        return above_ + (ranks_[column / 64] + static_cast<std::uint64_t>(std::popcount(passed)));
    }

    [[gnu::always_inline]] void LabelRun(std::uint32_t const* edge, Segment const* seen) {
        std::uint32_t const first = edge[0];
        std::uint32_t const end = edge[1];
        // Whether anything stands above the first pixel cannot be foreseen either: no branch, but all ones or none. A
        // record that is started for nothing is started again by the next run.
        std::int64_t const fresh = -static_cast<std::int64_t>(seen[0].first > first + CombineBlob);
        auto const chosen = static_cast<std::uint32_t>(fresh);
        std::uint32_t const label = (count_ & chosen) | (seen[0].label & ~chosen);
        std::uint32_t const next = (seen[0].first & chosen) | (seen[1].first & ~chosen);
        firsts_[count_] = {first, y_};
        count_ -= chosen;
        if (next < end + CombineBlob) [[unlikely]] {
            out_ = LabelJoining(rows_, seen + 1 + fresh, first, end, label, out_);
        } else {
            blobs_[label].Count(first, end, y_);
            // Both columns at once, as they stand there.
            std::memcpy(out_, edge, sizeof(Segment::first) + sizeof(Segment::end));
            out_->label = label;
            ++out_;
        }
    }

    MaskRows& rows_;
    std::uint32_t const y_ = static_cast<std::uint32_t>(rows_.y);
    Lane const* const ends_ = rows_.scan.aboveEnds;
    std::uint32_t const* const ranks_ = rows_.scan.ranks;
    Segment const* const above_ = rows_.above;
    InternalBlob* const blobs_ = rows_.records.blobs;
    FirstPixel* const firsts_ = rows_.records.firsts;
    std::uint32_t count_ = rows_.records.count;
    Segment* out_ = rows_.current;
};

/// Labels run by run: rows up to the last, but stops behind a row without runs and before one for which there may be
/// no room.
template <std::uint32_t CombineBlob, EdgeScan Scan, EdgeScan ScanAndCount, JoiningRun LabelJoining>
[[gnu::always_inline]] inline void LabelRuns(MaskRows& rows) {
    bool empty = false;
    while (rows.y != rows.last && !empty && rows.room - rows.records.count >= rows.CountNewRecords()) {
        // Whether a row has many runs is not known before it is scanned; the row above tells more often than not.
        bool const counted = rows.edgesEnd - rows.scan.edges >= FewEdges;
        std::uint32_t const* const words = rows.words + rows.y * rows.stride;
        rows.edgesEnd = counted ? ScanAndCount(words, rows.width, rows.scan) : Scan(words, rows.width, rows.scan);
        rows.started = rows.records.count;
        RunRow<CombineBlob, LabelJoining> row(rows);
        row.Label(counted);
        empty = row.IsEmpty();
        std::swap(rows.scan.aboveEnds, rows.scan.ends);
        rows.Advance();
    }
}

}  // namespace qel::algorithm::concom
