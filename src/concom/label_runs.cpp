#include "concom/label_runs.hpp"

#include <algorithm>

namespace qel::algorithm::concom {

template <std::uint32_t CombineBlob>
Segment* LabelJoiningRun(MaskRows& rows, Segment const* next, std::uint32_t first, std::uint32_t end,
                         std::uint32_t label, Segment* out) {
    BlobRecords& records = rows.records;
    auto const y = static_cast<std::uint32_t>(rows.y);
    do {
        if (next->label == label) continue;
        std::uint32_t const column = std::max(first, next->first - CombineBlob);
        std::uint32_t const root = records.FindRoot(label);
        std::uint32_t const other = records.FindRoot(next->label);
        // Where the run's label is the root that survives nothing changes at the column: not one segment more for the
        // rows below to see. Neither branch nor count can be foreseen, so there is one branch for both.
        if ((std::min(root, other) != label) & (column > first)) {
            // Counted before the merge: it hands over what has been counted, and nothing later.
            records.blobs[label].Count(column - first, first, column, y);
            *out++ = {first, label};
            rows.scan.ends[column / 64] |= ColumnBit(column);
            first = column;
        }
        label = records.MergeRoots(root, other);
    } while ((++next)->first < end + CombineBlob);
    records.blobs[label].Count(end - first, first, end, y);
    *out++ = {first, label};
    return out;
}

template Segment* LabelJoiningRun<CombineBlob4Way>(MaskRows&, Segment const*, std::uint32_t, std::uint32_t,
                                                   std::uint32_t, Segment*);
template Segment* LabelJoiningRun<CombineBlob8Way>(MaskRows&, Segment const*, std::uint32_t, std::uint32_t,
                                                   std::uint32_t, Segment*);

}  // namespace qel::algorithm::concom
