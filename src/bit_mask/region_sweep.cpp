// Rows are filled 64 pixels at a time. Leftwards an addition does it: a seed added to the run that it stands in carries
// up to the run's left end, over lanes as well. Rightwards the distance that seeds reach is doubled six times.
#include "bit_mask/region_sweep.hpp"

#include <algorithm>

namespace qel::algorithm::bit_mask {
namespace {

/// The two words from words[i] on as one lane; the second may be missing.
Lane Load(std::uint32_t const* words, std::size_t i, std::size_t count) {
    return Lane{words[i]} << 32U | (i + 1 < count ? words[i + 1] : 0U);
}

/// Seeds and what of the lane's runs stands left of them; carry passes from lane to lane, right to left.
Lane FillLeftwards(Lane fillable, Lane seeds, Lane& carry) {
    __extension__ using TwoLanes = unsigned __int128;
    TwoLanes const sum = TwoLanes{fillable} + seeds + carry;
    carry = static_cast<Lane>(sum >> 64U);
    return fillable & (~static_cast<Lane>(sum) | seeds);
}

}  // namespace

RegionSweep::RegionSweep(BitMask const& src, BitMask& dst, unsigned int height)
    : dst_(&dst),
      height_(height),
      lanes_((src.GetStride() + 1) / 2),
      fillable_(height_ * lanes_),
      region_(height_ * (lanes_ + 1) + 1),
      seeds_(lanes_),
      leading_(lanes_),
      open_(height_) {
    std::size_t const stride = src.GetStride();
    unsigned int const rest = src.GetSize().width % 64U;
    Lane const last = rest == 0 ? ~Lane{0} : ~(~Lane{0} >> rest);
    for (std::size_t row = 0; row < height_; ++row) {
        std::uint32_t const* const from = src.GetData().data() + row * stride;
        std::uint32_t const* const to = dst.GetData().data() + row * stride;
        Lane* const out = fillable_.data() + row * lanes_;
        for (std::size_t i = 0; i < lanes_; ++i) {
            out[i] = Load(from, 2 * i, stride) & ~Load(to, 2 * i, stride);
        }
        out[lanes_ - 1] &= last;
    }
}

void RegionSweep::Add(unsigned int first, unsigned int last, unsigned int row) {
    for (std::size_t i = first / 64; i <= last / 64; ++i) {
        Lane lane = ~Lane{0};
        if (i == first / 64) lane &= ~Lane{0} >> first % 64U;
        if (i == last / 64) lane &= ~Lane{0} << (63U - last % 64U);
        Region(row)[i] |= lane;
        // What is in the region may be passed through, whatever the masks hold there.
        fillable_[row * lanes_ + i] |= lane;
    }
    MarkNeighbours(row);
}

void RegionSweep::MarkNeighbours(std::size_t row) {
    auto const mark = [this](std::size_t neighbour) {
        openRows_ += open_[neighbour] == 0 ? 1 : 0;
        open_[neighbour] = 1;
    };
    if (row > 0) mark(row - 1);
    if (row + 1 < height_) mark(row + 1);
}

bool RegionSweep::FindSeeds(std::size_t row) {
    // A row that is not there is the other one once more.
    Lane const* const above = Region(row > 0 ? row - 1 : std::min<std::size_t>(row + 1, height_ - 1));
    Lane const* const below = Region(row + 1 < height_ ? row + 1 : row > 0 ? row - 1 : row);
    return kernels_->findSeeds(above, below, Fillable(row), Region(row), seeds_.data(), lanes_);
}

std::size_t RegionSweep::FillSeeds(std::size_t row) {
    Lane const* const fillable = Fillable(row);
    Lane* const region = Region(row);
    Lane carry = 0;
    for (std::size_t i = lanes_; i-- != 0;) seeds_[i] = FillLeftwards(fillable[i], seeds_[i] | region[i], carry);
    kernels_->fillRightwards(fillable, seeds_.data(), leading_.data(), lanes_);
    std::size_t changed = 0;
    Lane entering = 0;
    for (std::size_t i = 0; i < lanes_; ++i) {
        // What enters from the left fills the run that begins with the lane.
        Lane const filled = seeds_[i] | (leading_[i] & (0 - entering));
        changed += filled != region[i] ? 1 : 0;
        region[i] = filled;
        // Not taken from filled: so the lanes wait for each other no longer than they have to.
        entering = (seeds_[i] | (leading_[i] & entering)) & 1U;
    }
    return changed;
}

std::size_t RegionSweep::Update(std::size_t row) {
    if (open_[row] == 0) return 0;
    open_[row] = 0;
    --openRows_;
    if (!FindSeeds(row)) return 0;
    MarkNeighbours(row);
    return FillSeeds(row);
}

void RegionSweep::Run() {
    // A row costs as much as a few runs, by its length; what changes fewer lanes is faster run by run.
    std::size_t const worthARow = std::max<std::size_t>(1, lanes_ / 8);
    for (bool down = true; openRows_ != 0; down = !down) {
        std::size_t const rows = openRows_;
        std::size_t gained = 0;
        for (std::size_t i = 0; i < height_; ++i) gained += Update(down ? i : height_ - 1 - i);
        if (gained < worthARow * rows) return;
    }
}

void RegionSweep::Store() const {
    std::size_t const stride = dst_->GetStride();
    for (std::size_t row = 0; row < height_; ++row) {
        std::uint32_t* const words = dst_->GetData().data() + row * stride;
        Lane const* const region = Region(row);
        for (std::size_t i = 0; i < stride; ++i) {
            words[i] |= static_cast<std::uint32_t>(i % 2 == 0 ? region[i / 2] >> 32U : region[i / 2]);
        }
    }
}

}  // namespace qel::algorithm::bit_mask
