// Labels by runs of set pixels, and gives what labelling pixel by pixel gives.
//
// A pixel looks at the labels of its neighbours on the left and in the row above; a label there may belong to a record
// that has been merged into an older one since. One label is taken as it is, two different ones are merged and the
// pixel takes the root. So inside a run the label can change only where a further segment of equal labels in the row
// above comes into view, and each row is kept as such segments. Pixels are counted on the label they took, which may
// be a merged record's: those are missing from the blob's area, and the runs below inherit the very same label.
//
// Rows are labelled run by run, or, where most runs take the label that their neighbours take, in bulk: then only the
// runs that start a record or see two labels are looked at, and the pixels of the others are counted. Now and then a
// row is looked at to choose.
#include "concom/labeller.hpp"

#include <algorithm>

namespace qel::algorithm::concom {
namespace {

/// A row's labels are looked at once in so many rows, the first time when there is a row above.
constexpr std::size_t RowsBetweenChoices = 16;
/// Rows of fewer runs are not labelled in bulk: a row by itself takes as long as so many runs.
constexpr std::size_t LeastRuns = 32;

}  // namespace

void Labeller::InitialiseConcom(unsigned int width) {
    rows_.width = width;
    if (columns_ && width <= width_) return;
    // Never more edges or segments than pixels, but for slack and guards. Not zeroed: a row writes what the next one
    // reads.
    std::size_t const lanes = CountLanes(width) + LaneSlack;
    auto columns = std::make_unique_for_overwrite<std::uint32_t[]>(width + EdgeSlack + lanes);
    auto segments = std::make_unique_for_overwrite<Segment[]>(2 * (std::size_t{width} + 2));
    lanes_ = std::make_unique<Lane[]>(8 * lanes);
    columns_ = std::move(columns);
    segments_ = std::move(segments);
    width_ = width;
    rows_.above = segments_.get();
    rows_.current = rows_.above + width + 2;
    Lane* next = lanes_.get();
    for (Lane** const part : {&rows_.scan.ends, &rows_.scan.aboveEnds, &rows_.begins, &rows_.aboveBegins, &rows_.fresh,
                              &rows_.touched, &rows_.pixels, &rows_.abovePixels}) {
        *part = next;
        next += lanes;
    }
    // A clear lane before the first.
    ++rows_.pixels;
    ++rows_.abovePixels;
    rows_.scan.ranks = columns_.get();
    rows_.scan.edges = columns_.get() + lanes;
}

/// Nothing stands above the first row.
void Labeller::Initialise() {
    std::size_t const lanes = CountLanes(rows_.width);
    store_.Clear(rows_.records);
    rows_.above[0] = rows_.above[1] = Guard;
    rows_.edgesEnd = rows_.scan.edges;
    std::fill_n(rows_.scan.aboveEnds, lanes, Lane{0});
    std::fill_n(rows_.aboveBegins, lanes + 1, Lane{0});
    std::fill_n(rows_.abovePixels, lanes + 1, Lane{0});
}

/// Whether the row above would better have been labelled in bulk.
bool Labeller::PaysInBulk() const {
    std::size_t work = rows_.records.count - rows_.started;
    for (Segment const* segment = rows_.above; segment->first != Guard.first; ++segment) {
        work += segment[1].label != segment->label ? 1 : 0;
    }
    auto const runs = static_cast<std::size_t>(rows_.edgesEnd - rows_.scan.edges) / 2;
    // What is looked at takes two and a half times as long as labelling a run by itself.
    return runs >= LeastRuns && 5 * work < 2 * runs;
}

/// Turns the row above, labelled run by run, into one labelled in bulk.
void Labeller::JoinRuns() {
    LoadPixels(rows_.words + (rows_.y - 1) * rows_.stride, rows_.width, rows_.abovePixels);
    std::fill_n(rows_.aboveBegins, CountLanes(rows_.width) + 1, Lane{0});
    Segment* out = rows_.above + 1;
    for (Segment const* segment = out; segment->first != Guard.first; ++segment) {
        if (out[-1].label == segment->label) continue;
        rows_.aboveBegins[segment->first / 64] |= ColumnBit(segment->first);
        *out++ = *segment;
    }
    out[0] = out[1] = Guard;
}

/// Turns the row above, labelled in bulk, into one labelled run by run. Its edges have been scanned.
void Labeller::SplitIntoRuns() {
    Segment const* segment = rows_.above;
    Segment* out = rows_.current;
    for (std::uint32_t const* edge = rows_.scan.edges; edge != rows_.edgesEnd; edge += 2) {
        while (segment[1].first <= edge[0]) ++segment;
        *out++ = {edge[0], edge[1], segment->label};
        while (segment[1].first < edge[1]) {
            ++segment;
            out[-1].end = segment->first;
            *out++ = {segment->first, edge[1], segment->label};
            rows_.scan.ends[segment->first / 64] |= ColumnBit(segment->first);
        }
    }
    out[0] = out[1] = Guard;
    std::swap(rows_.above, rows_.current);
    std::swap(rows_.scan.aboveEnds, rows_.scan.ends);
}

void Labeller::ConnectRows(std::size_t rows, bool diagonally) {
    auto const labelRuns = diagonally ? kernels_.labelRuns8Way : kernels_.labelRuns4Way;
    auto const labelBulk = diagonally ? kernels_.labelBulk8Way : kernels_.labelBulk4Way;
    bool bulk = manner_ == Manner::Bulk;
    std::size_t choice = 2;
    for (rows_.y = 0; rows_.y != rows;) {
        if (rows_.above->first == Guard.first) {
            std::size_t const left = (rows - rows_.y) * rows_.stride;
            rows_.y += kernels_.skipZeros(rows_.words + rows_.y * rows_.stride, left) / rows_.stride;
            if (rows_.y == rows) return;
        }
        rows_.room = store_.Reserve(rows_.records, rows_.CountNewRecords());
        if (choice <= rows_.y) choice = rows_.y + RowsBetweenChoices;
        rows_.last = std::min(rows, choice);
        (bulk ? labelBulk : labelRuns)(rows_);
        if (manner_ == Manner::Adaptive && rows_.y == choice) {
            std::uint32_t const* const above = rows_.words + (rows_.y - 1) * rows_.stride;
            if (bulk) rows_.edgesEnd = kernels_.scanEdges(above, rows_.width, rows_.scan);
            bool const pays = PaysInBulk();
            if (pays && !bulk) JoinRuns();
            if (!pays && bulk) SplitIntoRuns();
            bulk = pays;
        }
    }
}

std::size_t Labeller::Connect(BitMask const& mask, bool diagonally, unsigned int min_area,
                              std::vector<ConnectedComponents::Blob>& blobs) {
    rows_.stride = mask.GetStride();
    if (rows_.stride == 0) {
        blobs.clear();
        return 0;
    }
    InitialiseConcom(mask.GetSize().width);
    Initialise();
    rows_.words = mask.GetData().data();
    // Rows that the store lacks, its owner having made it shorter, are not there.
    ConnectRows(std::min<std::size_t>(mask.GetSize().height, mask.GetData().size() / rows_.stride), diagonally);
    BlobStore::StitchBlobs(rows_.records);
    BlobStore::FilterBlobs(rows_.records, min_area, blobs);
    return blobs.size();
}

}  // namespace qel::algorithm::concom
