// Labels by runs of set pixels, and gives what labelling pixel by pixel gives.
//
// A pixel looks at the labels of its neighbours on the left and in the row above; a label there may belong to a record
// that has been merged into an older one since. One label is taken as it is, two different ones are merged and the
// pixel takes the root. So inside a run the label can change only where a further segment of equal labels in the row
// above comes into view, and each row is kept as such segments. Pixels are counted on the label they took, which may
// be a merged record's: those are missing from the blob's area, and the runs below inherit the very same label.
#include "qel/algorithm/connected_components.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

#include "concom/blob_store.hpp"
#include "concom/row_edges.hpp"

namespace qel::algorithm {
namespace {

/// Adjacent columns first to end - 1 of one row that took the same label.
struct Segment {
    std::uint32_t first;
    std::uint32_t end;
    std::uint32_t label;
};

/// Behind a row's last segment: right of every run.
constexpr Segment Guard{std::numeric_limits<std::uint32_t>::max(), std::numeric_limits<std::uint32_t>::max() - 1, 0};

/// How far beyond its own columns a run sees the row above.
constexpr std::uint32_t CombineBlob4Way = 0;
constexpr std::uint32_t CombineBlob8Way = 1;

}  // namespace

struct ConnectedComponents::Impl {
    template <std::uint32_t CombineBlob>
    std::size_t Connect(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs);

private:
    void InitialiseConcom(std::size_t width);
    void Initialise();
    template <std::uint32_t CombineBlob>
    void ConnectRow(std::uint32_t const* edgesEnd, std::uint32_t y);

    concom::BlobStore store_;
    std::size_t width_ = 0;  // what the three arrays are large enough for
    std::unique_ptr<std::uint32_t[]> edges_;
    std::unique_ptr<Segment[]> previous_;
    std::unique_ptr<Segment[]> current_;
};

void ConnectedComponents::Impl::InitialiseConcom(std::size_t width) {
    if (edges_ && width <= width_) return;
    // Never more edges or segments than pixels, but for slack and guard. Not zeroed: a row writes what the next one
    // reads.
    auto edges = std::make_unique_for_overwrite<std::uint32_t[]>(width + concom::EdgeSlack);
    auto previous = std::make_unique_for_overwrite<Segment[]>(width + 1);
    current_ = std::make_unique_for_overwrite<Segment[]>(width + 1);
    previous_ = std::move(previous);
    edges_ = std::move(edges);
    width_ = width;
}

void ConnectedComponents::Impl::Initialise() {
    store_.Clear();
    previous_[0] = Guard;
}

template <std::uint32_t CombineBlob>
void ConnectedComponents::Impl::ConnectRow(std::uint32_t const* edgesEnd, std::uint32_t y) {
    Segment const* above = previous_.get();
    Segment* out = current_.get();
    for (std::uint32_t const* edge = edges_.get(); edge != edgesEnd; edge += 2) {
        std::uint32_t first = edge[0];
        std::uint32_t const end = edge[1];
        while (above->end + CombineBlob <= first) ++above;
        // Whether anything stands above the first pixel cannot be foreseen: no branch. A record started for nothing
        // is overwritten by the next.
        bool const fresh = above->first > first + CombineBlob;
        std::uint32_t label = store_.Start(first, y, fresh);
        label = fresh ? label : above->label;
        Segment const* next = above + (fresh ? 0 : 1);
        if (next->first < end + CombineBlob) {
            // Further segments come into view; the last of them may reach the next run as well.
            do {
                if (next->label == label) continue;
                std::uint32_t const column = std::max(first, next->first - CombineBlob);
                if (column > first) {
                    // Counted before the merge: it hands over what has been counted, and nothing later.
                    store_.UpdateBlob(label, first, column, y);
                    *out++ = {first, column, label};
                    first = column;
                }
                label = store_.MergeBlobs(label, next->label);
            } while ((++next)->first < end + CombineBlob);
            above = next - 1;
        }
        store_.UpdateBlob(label, first, end, y);
        *out++ = {first, end, label};
    }
    *out = Guard;
}

template <std::uint32_t CombineBlob>
std::size_t ConnectedComponents::Impl::Connect(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs) {
    unsigned int const width = mask.GetSize().width;
    std::size_t const stride = mask.GetStride();
    if (stride == 0) {
        blobs.clear();
        return 0;
    }
    // Rows that the store lacks, its owner having made it shorter, are not there.
    std::size_t const rows = std::min<std::size_t>(mask.GetSize().height, mask.GetData().size() / stride);
    InitialiseConcom(width);
    Initialise();
    concom::EdgeScan const scanEdges = concom::GetEdgeScan();
    std::uint32_t const* words = mask.GetData().data();
    for (std::size_t y = 0; y < rows; ++y, words += stride) {
        std::uint32_t const* const edgesEnd = scanEdges(words, width, edges_.get());
        store_.Reserve(static_cast<std::size_t>(edgesEnd - edges_.get()) / 2 + 1);
        ConnectRow<CombineBlob>(edgesEnd, static_cast<std::uint32_t>(y));
        previous_.swap(current_);
    }
    store_.FilterBlobs(store_.StitchBlobs(min_area), min_area, blobs);
    return blobs.size();
}

ConnectedComponents::ConnectedComponents() : impl_(std::make_unique<Impl>()) {}
ConnectedComponents::ConnectedComponents(ConnectedComponents&& other) noexcept = default;
ConnectedComponents& ConnectedComponents::operator=(ConnectedComponents other) noexcept {
    swap(*this, other);
    return *this;
}
ConnectedComponents::~ConnectedComponents() = default;

std::size_t ConnectedComponents::Connect8Way(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs) {
    if (!impl_) throw std::logic_error("Pimpl is null");
    return impl_->Connect<CombineBlob8Way>(mask, min_area, blobs);
}

std::size_t ConnectedComponents::Connect4Way(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs) {
    if (!impl_) throw std::logic_error("Pimpl is null");
    return impl_->Connect<CombineBlob4Way>(mask, min_area, blobs);
}

}  // namespace qel::algorithm
