// Labels runs of set pixels, a row at a time. A run that touches nothing of its blob's other runs in the row represents
// the blob there; runs further right that reach the same blob point to the representative. Runs inherit height, bounds
// and area from the runs above that they touch, not from the blobs those belong to.
#include "qel/algorithm/line_by_line_connected_components.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>

#include "concom/kernels.hpp"

namespace qel::algorithm {

using concom::BlobStats;

namespace {

/// No column, and none follows.
constexpr std::uint32_t RightOfAll = std::numeric_limits<std::uint32_t>::max() - 1;

}  // namespace

struct LineByLineConnectedComponents::Impl {
    explicit Impl(unsigned int width);
    void LineByLine8Way(std::uint32_t const* row, std::vector<BlobStats>& finished);

private:
    std::size_t LinkRuns(std::uint32_t const* edgesEnd);
    void CollectFinished(std::vector<BlobStats>& finished);
    void OpenBlobs(std::size_t count);

    unsigned int width_;
    concom::EdgeScan scanEdges_ = concom::GetKernels().scanEdges;
    // Entry 0 is no run: runs are numbered from 1. Sized so that every other pixel may be one, and one more: behind
    // the last run stands one that is right of all others.
    std::vector<BlobStats> current_, previous_;
    std::vector<BlobStats> open_;
    // For each open blob, from 1, the first run of the current row that continues it; 0 without one.
    std::vector<std::uint32_t> labelMap_;
    std::unique_ptr<std::uint32_t[]> columns_;
    std::unique_ptr<concom::Lane[]> lanes_;
    concom::RowEdges edges_{};
};

LineByLineConnectedComponents::Impl::Impl(unsigned int width) : width_(width) {
    std::size_t const runs = std::size_t{width} / 2 + 3;
    current_.resize(runs);
    previous_.resize(runs);
    previous_[1].min = previous_[1].max = RightOfAll;
    open_.reserve(runs);
    labelMap_.reserve(runs);
    std::size_t const lanes = concom::CountLanes(width) + concom::LaneSlack;
    columns_ = std::make_unique_for_overwrite<std::uint32_t[]>(width + concom::EdgeSlack + lanes);
    lanes_ = std::make_unique<concom::Lane[]>(2 * lanes);
    edges_ = {columns_.get() + lanes, lanes_.get(), lanes_.get() + lanes, columns_.get()};
}

/// Makes runs of the row's edges, each with what it inherits from the runs above that it touches; returns how many
/// open blobs they continue.
std::size_t LineByLineConnectedComponents::Impl::LinkRuns(std::uint32_t const* edgesEnd) {
    labelMap_.assign(open_.size() + 1, 0);
    std::size_t continued = 0;
    std::uint32_t number = 0;
    BlobStats const* above = previous_.data() + 1;
    for (std::uint32_t const* edge = edges_.edges; edge != edgesEnd; edge += 2) {
        std::uint32_t const first = edge[0], end = edge[1];
        BlobStats& run = current_[++number];
        std::uint32_t parent = number, height = 0, minBound = first, maxBound = end - 1, area = end - first;
        run.parent = parent;
        // The last run touched may reach the next run as well: it is not passed yet.
        while (above->max + 1 < first) ++above;
        for (BlobStats const* touched = above; touched->min <= end; ++touched) {
            std::uint32_t& known = labelMap_[touched->parent];
            if (known == 0) {
                known = number;
                ++continued;
            } else {
                // Representatives are chosen, never linked again: two that were chosen before stay apart (kept).
                parent = std::min(parent, current_[known].parent);
            }
            height = std::max(height, touched->height);
            minBound = std::min(minBound, touched->min_bound);
            maxBound = std::max(maxBound, touched->max_bound);
            area += touched->area;
        }
        run.parent = parent;
        run.min = first;
        run.max = end - 1;
        run.width = 0;
        run.height = height + 1;
        run.min_bound = minBound;
        run.max_bound = maxBound;
        run.area = area;
    }
    current_[number + 1].min = current_[number + 1].max = RightOfAll;
    return continued;
}

void LineByLineConnectedComponents::Impl::CollectFinished(std::vector<BlobStats>& finished) {
    for (std::size_t i = 0; i < open_.size(); ++i) {
        std::uint32_t const continued = labelMap_[i + 1];
        if (continued == 0) {
            finished.push_back(open_[i]);
        } else {
            current_[continued].width = std::max(current_[continued].width, open_[i].width);
        }
    }
}

void LineByLineConnectedComponents::Impl::OpenBlobs(std::size_t count) {
    open_.clear();
    for (std::uint32_t k = 1; k <= count; ++k) {
        BlobStats& run = current_[k];
        if (run.parent == k) {
            run.width = std::max(run.max + 1 - run.min, run.width);
            run.parent = static_cast<std::uint32_t>(open_.size()) + 1;
            open_.push_back(run);
            continue;
        }
        // The representative stands further left and knows its position by now.
        run.parent = current_[run.parent].parent;
        BlobStats& blob = open_[run.parent - 1];
        blob.min = std::min(blob.min, run.min);
        blob.max = std::max(blob.max, run.max);
        blob.width = std::max({blob.max + 1 - blob.min, blob.width, run.width});
        blob.height = std::max(blob.height, run.height);
        blob.min_bound = std::min(blob.min_bound, run.min_bound);
        blob.max_bound = std::max(blob.max_bound, run.max_bound);
        // The larger, not the sum: what joins in a row has mostly been counted on both sides (kept).
        blob.area = std::max(blob.area, run.area);
    }
}

void LineByLineConnectedComponents::Impl::LineByLine8Way(std::uint32_t const* row, std::vector<BlobStats>& finished) {
    std::uint32_t const* const edgesEnd = scanEdges_(row, width_, edges_);
    finished.clear();
    if (edgesEnd == edges_.edges && open_.empty()) return;
    std::size_t const continued = LinkRuns(edgesEnd);
    // The only allocation, before anything that the next row builds on changes.
    finished.reserve(open_.size() - continued);
    CollectFinished(finished);
    OpenBlobs(static_cast<std::size_t>(edgesEnd - edges_.edges) / 2);
    current_.swap(previous_);
}

LineByLineConnectedComponents::LineByLineConnectedComponents(unsigned int width)
    : impl_(std::make_unique<Impl>(width)) {}
LineByLineConnectedComponents::LineByLineConnectedComponents(LineByLineConnectedComponents&& other) noexcept = default;
LineByLineConnectedComponents& LineByLineConnectedComponents::operator=(LineByLineConnectedComponents other) noexcept {
    swap(*this, other);
    return *this;
}
LineByLineConnectedComponents::~LineByLineConnectedComponents() = default;

void LineByLineConnectedComponents::LineByLine8Way(std::uint32_t const* row, std::vector<BlobStats>& finished) {
    if (!impl_) throw std::logic_error("Pimpl is null");
    impl_->LineByLine8Way(row, finished);
}

}  // namespace qel::algorithm
