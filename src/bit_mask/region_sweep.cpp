#include "bit_mask/region_sweep.hpp"

#include <algorithm>

namespace qel::algorithm::bit_mask {

RegionSweep::RegionSweep(BitMask const& src, BitMask& dst, std::size_t height)
    : src_(&src),
      dst_(&dst),
      height_(height),
      lanes_((src.GetStride() + 1) / 2),
      pitch_((lanes_ + LaneGroup) / LaneGroup),
      last_(~Lane{0} >> (64U * lanes_ - src.GetSize().width)),
      groups_(std::make_unique_for_overwrite<AlignedGroup[]>(2 * pitch_ * (height_ + 3))),
      rows_(height_),
      lowest_(height_) {
    for (std::size_t const outside : {std::size_t{0} - 1, height_}) {
        std::fill_n(Fillable(outside), 2 * LaneGroup * pitch_, Lane{0});
    }
}

std::size_t RegionSweep::CountRepeated(std::size_t row, std::ptrdiff_t step, std::size_t rows) const {
    std::size_t const stride = src_->GetStride();
    std::uint32_t const* const src = src_->GetData().data() + row * stride;
    std::uint32_t const* const dst = dst_->GetData().data() + row * stride;
    // Rows that differ mostly do so in the middle already.
    auto const middle = static_cast<std::ptrdiff_t>(stride / 2);
    if ((src[middle] & ~dst[middle]) != (src[middle + step] & ~dst[middle + step])) return 0;
    return kernels_->countRepeated(src, dst, stride, step, rows);
}

void RegionSweep::FindBand(std::size_t row) {
    std::size_t const stride = src_->GetStride();
    auto const step = static_cast<std::ptrdiff_t>(stride);
    // Beside a row that is prepared another band begins.
    std::size_t const above = row == 0 || rows_[row - 1].prepared ? 0 : CountRepeated(row, -step, row);
    std::size_t const left = height_ - row - 1;
    std::size_t const below = left == 0 || rows_[row + 1].prepared ? 0 : CountRepeated(row, step, left);
    std::size_t const band = row - above, others = above + below;
    for (std::size_t i = 0; i <= others; ++i) {
        rows_[band + i] = {static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(others - i), true, false, false};
    }
    kernels_->load(src_->GetData().data() + row * stride, dst_->GetData().data() + row * stride, stride, Fillable(band),
                   Region(band), LaneGroup * pitch_);
    Fillable(band)[lanes_ - 1] &= last_;
    lowest_ = std::min(lowest_, band);
    highest_ = std::max(highest_, band);
}

void RegionSweep::PrepareNeighbours(std::size_t band) {
    Prepare(band - 1);
    Prepare(Below(band));
}

void RegionSweep::Add(unsigned int first, unsigned int last, std::size_t row) {
    Prepare(row);
    std::size_t const band = Band(row);
    for (std::size_t i = first / 64; i <= last / 64; ++i) {
        Lane lane = ~Lane{0};
        if (i == first / 64) lane &= ~Lane{0} << first % 64U;
        if (i == last / 64) lane &= ~Lane{0} >> (63U - last % 64U);
        Region(band)[i] |= lane;
    }
    rows_[band].reached = true;
    PrepareNeighbours(band);
    Open(Above(band));
    Open(Below(band));
}

void RegionSweep::Open(std::size_t band) {
    if (band >= height_ || rows_[band].open) return;
    rows_[band].open = true;
    // What growing a band looks at.
    PrepareNeighbours(band);
}

void RegionSweep::Update(std::size_t band) {
    if (!rows_[band].open) return;
    rows_[band].open = false;
    ++visited_;
    std::size_t const above = Above(band), below = Below(band);
    std::size_t const changed =
        kernels_->grow(Region(above), Region(below), Fillable(band), Region(band), Fillable(height_ + 1), lanes_);
    if (changed == 0) return;
    rows_[band].reached = true;
    gained_ += changed;
    Open(above);
    Open(below);
}

void RegionSweep::Run() {
    bool down = true;
    do {
        visited_ = gained_ = 0;
        if (down) {
            for (std::size_t band = lowest_; band <= highest_; band = Below(band)) Update(band);
        } else {
            for (std::size_t band = highest_; band + 1 > lowest_; band = Above(band)) Update(band);
        }
        down = !down;
        // What changes no more than a lane a band is faster run by run.
    } while (gained_ > visited_);
}

void RegionSweep::Store() const {
    std::size_t const stride = src_->GetStride();
    for (std::size_t row = lowest_; row < Below(highest_); ++row) {
        std::size_t const band = Band(row);
        if (rows_[band].reached) kernels_->store(Region(band), dst_->GetData().data() + row * stride, stride);
    }
}

}  // namespace qel::algorithm::bit_mask
