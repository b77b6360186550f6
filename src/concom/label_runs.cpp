#include "concom/label_runs.hpp"

#include <algorithm>

namespace qel::algorithm::concom {

template <std::uint32_t CombineBlob>
Segment* LabelJoiningRun(MaskRows& rows, Segment const* next, std::uint32_t first, std::uint32_t end,
                         std::uint32_t label, Segment* out) {
    BlobRecords& records = rows.records;
    do {
        if (next->label == label) continue;
        std::uint32_t const column = std::max(first, next->first - CombineBlob);
        if (column > first) {
            // Counted before the merge: it hands over what has been counted, and nothing later.
            records.UpdateBlob(records.blobs[label], column - first, first, column, static_cast<std::uint32_t>(rows.y));
            *out++ = {first, label};
            rows.scan.ends[column / 64] |= ColumnBit(column);
            first = column;
        }
        label = records.MergeBlobs(label, next->label);
    } while ((++next)->first < end + CombineBlob);
    records.UpdateBlob(records.blobs[label], end - first, first, end, static_cast<std::uint32_t>(rows.y));
    *out++ = {first, label};
    return out;
}

template Segment* LabelJoiningRun<CombineBlob4Way>(MaskRows&, Segment const*, std::uint32_t, std::uint32_t,
                                                   std::uint32_t, Segment*);
template Segment* LabelJoiningRun<CombineBlob8Way>(MaskRows&, Segment const*, std::uint32_t, std::uint32_t,
                                                   std::uint32_t, Segment*);

}  // namespace qel::algorithm::concom
