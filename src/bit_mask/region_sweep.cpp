#include "bit_mask/region_sweep.hpp"

#include <algorithm>

namespace qel::algorithm::bit_mask {

RegionSweep::RegionSweep(BitMask const& src, BitMask& dst, std::size_t height)
    : src_(&src),
      dst_(&dst),
      height_(height),
      lanes_((src.GetStride() + 1) / 2),
      pitch_((lanes_ + LaneGroup) / LaneGroup * LaneGroup),
      last_(~Lane{0} >> (64U * lanes_ - src.GetSize().width)),
      fillable_(std::make_unique_for_overwrite<Lane[]>(height_ * pitch_)),
      // A group more in front: the lane before the first is read.
      region_(std::make_unique_for_overwrite<Lane[]>(LaneGroup + (height_ + 2) * pitch_)),
      scratch_(std::make_unique_for_overwrite<Lane[]>(2 * pitch_)),
      rows_(height_),
      lowest_(height_) {
    std::fill_n(region_.get(), LaneGroup + pitch_, Lane{0});
    std::fill_n(Region(height_), pitch_, Lane{0});
}

void RegionSweep::Prepare(std::size_t row) {
    if (rows_[row].prepared) return;
    rows_[row].prepared = true;
    std::size_t const stride = src_->GetStride();
    kernels_->load(src_->GetData().data() + row * stride, dst_->GetData().data() + row * stride, stride, Fillable(row),
                   Region(row), pitch_);
    Fillable(row)[lanes_ - 1] &= last_;
    // The lane before the row is read as well.
    Region(row)[-1] = 0;
}

void RegionSweep::Add(unsigned int first, unsigned int last, std::size_t row) {
    Prepare(row);
    for (std::size_t i = first / 64; i <= last / 64; ++i) {
        Lane lane = ~Lane{0};
        if (i == first / 64) lane &= ~Lane{0} << first % 64U;
        if (i == last / 64) lane &= ~Lane{0} >> (63U - last % 64U);
        Region(row)[i] |= lane;
        // What is in the region may be passed through, whatever the masks hold there.
        Fillable(row)[i] |= lane;
    }
    OpenNeighbours(row);
}

void RegionSweep::Open(std::size_t row) {
    if (rows_[row].open) return;
    rows_[row].open = true;
    // What growing a row looks at.
    if (row > 0) Prepare(row - 1);
    Prepare(row);
    if (row + 1 < height_) Prepare(row + 1);
    lowest_ = std::min(lowest_, row);
    highest_ = std::max(highest_, row);
}

void RegionSweep::OpenNeighbours(std::size_t row) {
    if (row > 0) {
        Open(row - 1);
        rows_[row - 1].changedBelow = true;
    }
    if (row + 1 < height_) {
        Open(row + 1);
        rows_[row + 1].changedAbove = true;
    }
}

bool RegionSweep::IsRepeated(std::size_t row) {
    auto& content = rows_[row].content;
    if (content == RowState::Unknown) {
        bool const same = std::equal(Fillable(row), Fillable(row) + lanes_, Fillable(row - 1));
        content = same ? RowState::Repeated : RowState::Different;
    }
    return content == RowState::Repeated;
}

std::size_t RegionSweep::Grow(std::size_t row, bool byAbove, bool byBelow) {
    // Regions hold whole runs: where a neighbour has the very same ones the row takes over which.
    bool const takesOver = (!byAbove || IsRepeated(row)) && (!byBelow || IsRepeated(row + 1));
    Lane* const region = Region(row);
    if (!takesOver) {
        return kernels_->grow(region - pitch_, region + pitch_, Fillable(row), region, scratch_.get(), lanes_);
    }
    std::size_t changed = 0;
    if (byAbove) changed += kernels_->unite(region - pitch_, region, lanes_);
    if (byBelow) changed += kernels_->unite(region + pitch_, region, lanes_);
    return changed;
}

void RegionSweep::Update(std::size_t row) {
    if (!rows_[row].open) return;
    bool const byAbove = rows_[row].changedAbove, byBelow = rows_[row].changedBelow;
    rows_[row].open = rows_[row].changedAbove = rows_[row].changedBelow = false;
    ++visited_;
    std::size_t const changed = Grow(row, byAbove, byBelow);
    if (changed == 0) return;
    gained_ += changed;
    OpenNeighbours(row);
}

void RegionSweep::Run() {
    bool down = true;
    do {
        visited_ = gained_ = 0;
        if (down) {
            for (std::size_t row = lowest_; row <= highest_; ++row) Update(row);
        } else {
            for (std::size_t row = highest_ + 1; row-- > lowest_;) Update(row);
        }
        down = !down;
        // What changes no more than a lane a row is faster run by run.
    } while (gained_ > visited_);
}

void RegionSweep::Store() const {
    std::size_t const stride = src_->GetStride();
    for (std::size_t row = 0; row < height_; ++row) {
        if (rows_[row].prepared) kernels_->store(Region(row), dst_->GetData().data() + row * stride, stride);
    }
}

}  // namespace qel::algorithm::bit_mask
