// Labels runs of set pixels, a row at a time. A run that touches nothing of its blob's other runs in the row represents
// the blob there; runs further right that reach the same blob point to the representative. Runs inherit height, bounds
// and area from the runs above that they touch, not from the blobs those belong to.
#include "qel/algorithm/line_by_line_connected_components.hpp"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>

#include "concom/kernels.hpp"

namespace qel::algorithm {

using concom::BlobStats;

struct LineByLineConnectedComponents::Impl {
    explicit Impl(unsigned int width);
    void LineByLine8Way(std::uint32_t const* row, std::vector<BlobStats>& finished);

private:
    std::size_t ExtractRuns(std::uint32_t const* row);
    void LinkRuns(std::size_t count);
    void CollectFinished(std::vector<BlobStats>& finished);
    void OpenBlobs(std::size_t count);

    unsigned int width_;
    concom::EdgeScan scanEdges_ = concom::GetKernels().scanEdges;
    // Entry 0 is no run: runs are numbered from 1. Sized so that every other pixel may be one.
    std::vector<BlobStats> current_, previous_;
    std::size_t previousCount_ = 0;
    std::vector<BlobStats> open_;
    // For each open blob, from 1, the first run of the current row that continues it; 0 without one.
    std::vector<std::uint32_t> labelMap_;
    std::unique_ptr<std::uint32_t[]> edges_;
    std::unique_ptr<concom::Lane[]> ends_, aboveEnds_;
    std::unique_ptr<std::uint32_t[]> ranks_;
};

LineByLineConnectedComponents::Impl::Impl(unsigned int width) : width_(width) {
    std::size_t const runs = std::size_t{width} / 2 + 2;
    current_.resize(runs);
    previous_.resize(runs);
    open_.reserve(runs);
    labelMap_.reserve(runs);
    edges_ = std::make_unique_for_overwrite<std::uint32_t[]>(std::size_t{width} + concom::EdgeSlack);
    ends_ = std::make_unique_for_overwrite<concom::Lane[]>(concom::CountLanes(width) + concom::LaneSlack);
    aboveEnds_ = std::make_unique<concom::Lane[]>(concom::CountLanes(width) + concom::LaneSlack);
    ranks_ = std::make_unique_for_overwrite<std::uint32_t[]>(concom::CountLanes(width) + concom::LaneSlack);
}

/// Fills in what a run is by itself; returns the number of runs.
std::size_t LineByLineConnectedComponents::Impl::ExtractRuns(std::uint32_t const* row) {
    std::uint32_t const* const end =
        scanEdges_(row, width_, {edges_.get(), ends_.get(), aboveEnds_.get(), ranks_.get()});
    std::uint32_t number = 0;
    for (std::uint32_t const* edge = edges_.get(); edge != end; edge += 2) {
        BlobStats& run = current_[++number];
        run.parent = number;
        run.min = run.min_bound = edge[0];
        run.max = run.max_bound = edge[1] - 1;
        run.width = 0;
        run.height = 1;
        run.area = edge[1] - edge[0];
    }
    return number;
}

void LineByLineConnectedComponents::Impl::LinkRuns(std::size_t count) {
    std::size_t first = 1;
    for (std::uint32_t k = 1; k <= count; ++k) {
        BlobStats& run = current_[k];
        while (first <= previousCount_ && previous_[first].max + 1 < run.min) ++first;
        // The last run touched may reach the next run as well: it is not passed yet.
        for (std::size_t p = first; p <= previousCount_ && previous_[p].min <= run.max + 1; ++p) {
            BlobStats const& above = previous_[p];
            std::uint32_t& continued = labelMap_[above.parent];
            if (continued == 0) {
                continued = k;
            } else {
                // Representatives are chosen, never linked again: two that were chosen before stay apart (kept).
                run.parent = std::min(run.parent, current_[continued].parent);
            }
            run.height = std::max(run.height, above.height + 1);
            run.min_bound = std::min(run.min_bound, above.min_bound);
            run.max_bound = std::max(run.max_bound, above.max_bound);
            run.area += above.area;
        }
    }
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
    std::size_t const count = ExtractRuns(row);
    labelMap_.assign(open_.size() + 1, 0);
    LinkRuns(count);
    finished.clear();
    // The only allocation, before anything that the next row builds on changes.
    finished.reserve(static_cast<std::size_t>(std::count(labelMap_.begin() + 1, labelMap_.end(), 0U)));
    CollectFinished(finished);
    OpenBlobs(count);
    previousCount_ = count;
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
