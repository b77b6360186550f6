// A small region is grown row by row inside a window of 64 columns: a row of it is one number, however many runs it
// has, and nothing depends on how ragged they are. Down and up in turn, each time over the rows that the last time has
// left something to reach.
#include "bit_mask/window_fill.hpp"

#include <algorithm>
#include <memory>

namespace qel::algorithm::bit_mask {
namespace {

/// 64 pixels of a row, the first in the highest bit.
using Pixels = std::uint64_t;

/// The runs of set pixels that hold one of the seeds, which are pixels of theirs.
Pixels FillRuns(Pixels pixels, Pixels seeds) {
    // An addition carries a seed to its run's first pixel; on the way to the last the reach is doubled: 1, 2, ... 32.
    Pixels filled = seeds | (pixels & ~(pixels + seeds));
    for (unsigned int distance = 1; distance < 64; distance *= 2) {
        filled |= pixels & (filled >> distance);
        pixels &= pixels >> distance;
    }
    return filled;
}

/// The first and the last column of a window.
constexpr Pixels Sides = Pixels{1} << 63U | 1U;

Pixels Spread(Pixels row) { return row | row << 1U | row >> 1U; }

class Window {
public:
    Window(BitMask const& src, BitMask& dst, std::size_t height, unsigned int column)
        : stride_(static_cast<std::ptrdiff_t>(src.GetStride())),
          height_(static_cast<std::ptrdiff_t>(height)),
          word_(std::min<std::ptrdiff_t>((std::max(column, 16U) - 16U) / 32U, stride_ - 2)),
          src_(src.GetData().data() + word_),
          dst_(dst.GetData().data() + word_),
          width_(src.GetSize().width - 32U * static_cast<unsigned int>(word_)),
          inside_(width_ < 64 ? ~(~Pixels{0} >> width_) : ~Pixels{0}),
          rows_(std::make_unique_for_overwrite<Pixels[]>(height + 4)) {}

    /// Grows the region; false when it leaves the window.
    bool Grow(unsigned int column, std::ptrdiff_t row) {
        Pixels const seed = Pixels{1} << (63U - (column - 32U * static_cast<unsigned int>(word_)));
        top_ = bottom_ = row;
        for (std::ptrdiff_t const i : {-2, -1, 1, 2}) Row(row + i) = 0;
        Row(row) = FillRuns(GetFillable(row) | seed, seed);
        if (Leaves(row)) return false;
        // The row above the seed waits for the sweep up.
        first_ = last_ = row - 1;
        bool inside = Sweep<1>(row + 1, row + 1);
        bool down = false;
        while (inside && first_ <= last_) {
            std::ptrdiff_t const first = first_, last = last_;
            first_ = height_;
            last_ = -1;
            inside = down ? Sweep<1>(first, last) : Sweep<-1>(last, first);
            down = !down;
        }
        return inside;
    }

    /// Sets the region in dst.
    void Store() const {
        for (std::ptrdiff_t row = top_; row <= bottom_; ++row) {
            dst_[row * stride_] |= static_cast<std::uint32_t>(Row(row) >> 32U);
            dst_[row * stride_ + 1] |= static_cast<std::uint32_t>(Row(row));
        }
    }

private:
    Pixels& Row(std::ptrdiff_t row) const { return rows_[static_cast<std::size_t>(row + 2)]; }

    std::uint32_t GetWord(std::ptrdiff_t row, std::ptrdiff_t i) const {
        return src_[row * stride_ + i] & ~dst_[row * stride_ + i];
    }

    Pixels GetFillable(std::ptrdiff_t row) const {
        return (Pixels{GetWord(row, 0)} << 32U | GetWord(row, 1)) & inside_;
    }

    /// Whether the region goes on beside the window, from this row.
    bool Leaves(std::ptrdiff_t row) const {
        bool const left = Row(row) >> 63U != 0 && word_ > 0, right = (Row(row) & 1U) != 0 && width_ > 64;
        if (!left && !right) return false;
        for (std::ptrdiff_t y = std::max<std::ptrdiff_t>(row - 1, 0); y <= std::min(row + 1, height_ - 1); ++y) {
            if ((left && (GetWord(y, -1) & 1U) != 0) || (right && GetWord(y, 2) >> 31U != 0)) return true;
        }
        return false;
    }

    /// Grows rows first to last and goes on as long as rows change; false when the region leaves the window. Notes the
    /// rows behind that then have something to reach. There is one behind the first at least: sweeps begin beside rows
    /// of the region.
    template <std::ptrdiff_t Step>
    bool Sweep(std::ptrdiff_t first, std::ptrdiff_t last) {
        Pixels behind = Row(first - Step);
        for (std::ptrdiff_t row = first; row >= 0 && row < height_; row += Step) {
            Pixels const old = Row(row);
            Pixels const pixels = GetFillable(row) | old;
            Pixels const seeds = Spread(behind | Row(row + Step)) & pixels & ~old;
            if (seeds == 0) {
                if ((last - row) * Step <= 0) return true;
                behind = old;
                continue;
            }
            Pixels const grown = old | FillRuns(pixels, seeds);
            Row(row) = grown;
            if (std::ptrdiff_t& outermost = Step > 0 ? bottom_ : top_; row == outermost + Step) {
                outermost = row;
                Row(row + 2 * Step) = 0;
            }
            if ((grown & Sides) != 0 && Leaves(row)) return false;
            std::ptrdiff_t const back = row - Step;
            if ((Spread(grown) & GetFillable(back) & ~behind) != 0) {
                first_ = std::min(first_, back);
                last_ = std::max(last_, back);
            }
            behind = grown;
        }
        return true;
    }

    std::ptrdiff_t stride_;
    std::ptrdiff_t height_;
    std::ptrdiff_t word_;  ///< the window's first, of a row
    std::uint32_t const* src_;
    std::uint32_t* dst_;
    unsigned int width_;  ///< of what is right of the window's left side
    Pixels inside_;
    std::unique_ptr<Pixels[]> rows_;       ///< the region, from two rows before the first on
    std::ptrdiff_t top_ = 0, bottom_ = 0;  ///< rows that it has; two more on either side are empty
    std::ptrdiff_t first_ = 0, last_ = 0;  ///< rows that may have something to reach
};

}  // namespace

bool FillWindow(BitMask const& src, BitMask& dst, std::size_t height, geometry::Point<unsigned int, 2> const& seed) {
    if (src.GetStride() < 2) return false;
    Window window(src, dst, height, seed.x);
    if (!window.Grow(seed.x, static_cast<std::ptrdiff_t>(seed.y))) return false;
    window.Store();
    return true;
}

}  // namespace qel::algorithm::bit_mask
