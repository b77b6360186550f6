// A small region is grown row by row inside a window of few columns: a row of it is one number, however many runs it
// has, and nothing depends on how ragged they are. Down and up in turn, each time over the rows that the last time has
// left something to reach. A region that leaves the window is begun anew in one of twice as many columns if it looks
// like a body with a ragged rim. Others are left to runs, which are faster where rows are smooth, or noise, where whole
// rows would have to be grown after all.
#include "bit_mask/window_fill.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>

namespace qel::algorithm::bit_mask {
namespace {

/// 64 pixels of a row, the first in the highest bit.
using Lane = std::uint64_t;

/// Of a lane's pixels.
constexpr Lane First = Lane{1} << 63U, Last = 1;

/// A window's row.
template <std::size_t Lanes>
using Pixels = std::array<Lane, Lanes>;

/// The row whose i-th lane is function(i).
template <std::size_t Lanes, class Function>
[[gnu::always_inline]] inline Pixels<Lanes> EachLane(Function function) {
    Pixels<Lanes> row;
    for (std::size_t i = 0; i < Lanes; ++i) row[i] = function(i);
    return row;
}

template <std::size_t Lanes>
[[gnu::always_inline]] inline bool IsEmpty(Pixels<Lanes> const& row) {
    Lane any = 0;
    for (Lane const lane : row) any |= lane;
    return any == 0;
}

/// The pixels of a row and those beside them.
template <std::size_t Lanes>
[[gnu::always_inline]] inline Pixels<Lanes> Spread(Pixels<Lanes> const& row) {
    Pixels<Lanes> spread = EachLane<Lanes>([&](std::size_t i) { return row[i] | row[i] << 1U | row[i] >> 1U; });
    for (std::size_t i = 1; i < Lanes; ++i) {
        spread[i] |= row[i - 1] << 63U;
        spread[i - 1] |= row[i] >> 63U;
    }
    return spread;
}

/// The runs of set pixels that hold one of the seeds, which are pixels of theirs.
template <std::size_t Lanes>
[[gnu::always_inline]] inline Pixels<Lanes> FillRuns(Pixels<Lanes> const& pixels, Pixels<Lanes> const& seeds) {
    __extension__ using TwoLanes = unsigned __int128;
    Pixels<Lanes> filled;
    // An addition carries a seed to its run's first pixel; on the way to the last the reach is doubled: 1, 2, ... 32.
    Lane carry = 0;
    for (std::size_t i = Lanes; i-- != 0;) {
        TwoLanes const sum = TwoLanes{pixels[i]} + seeds[i] + carry;
        carry = static_cast<Lane>(sum >> 64U);
        filled[i] = seeds[i] | (pixels[i] & ~static_cast<Lane>(sum));
    }
    Pixels<Lanes> passable = pixels;
    for (unsigned int distance = 1; distance < 64; distance *= 2) {
        for (std::size_t i = 0; i < Lanes; ++i) {
            filled[i] |= passable[i] & (filled[i] >> distance);
            passable[i] &= passable[i] >> distance;
        }
    }
    // What reaches a lane's last pixel goes on with the run that the next begins with.
    for (std::size_t i = 1; i < Lanes; ++i) {
        Lane const ahead = ~(~Lane{0} >> std::countl_zero(~pixels[i] | 1U));
        filled[i] |= (ahead | (ahead >> 1U & pixels[i])) & (0 - (filled[i - 1] & 1U));
    }
    return filled;
}

template <std::size_t Lanes>
class Window {
public:
    Window(BitMask const& src, BitMask& dst, std::size_t height, unsigned int column)
        : stride_(static_cast<std::ptrdiff_t>(src.GetStride())),
          height_(static_cast<std::ptrdiff_t>(height)),
          word_(std::min<std::ptrdiff_t>((std::max(column, Before) - Before) / 32U, stride_ - Words)),
          src_(src.GetData().data() + word_),
          dst_(dst.GetData().data() + word_),
          width_(src.GetSize().width - 32U * static_cast<unsigned int>(word_)),
          inside_(width_ < Columns ? ~(~Lane{0} >> (width_ + 64U - Columns)) : ~Lane{0}),
          rows_(std::make_unique_for_overwrite<Row[]>(height + 4)) {}

    /// Grows the region; false when it leaves the window, or winds so much that runs are faster.
    bool Grow(unsigned int column, std::ptrdiff_t row) {
        unsigned int const x = column - 32U * static_cast<unsigned int>(word_);
        top_ = bottom_ = row;
        for (std::ptrdiff_t const i : {-2, -1, 1, 2}) At(row + i) = {};
        Row seed{};
        seed[x / 64] = First >> x % 64U;
        Row pixels = GetFillable(row);
        pixels[x / 64] |= seed[x / 64];
        At(row) = FillRuns<Lanes>(pixels, seed);
        if (Leaves(row)) return false;
        // The row above the seed waits for the sweep up.
        first_ = last_ = row - 1;
        bool inside = Sweep<1>(row + 1, row + 1);
        bool down = false;
        for (int sweeps = 1; inside && first_ <= last_; ++sweeps) {
            if (sweeps == MaxSweeps) return false;
            std::ptrdiff_t const first = first_, last = last_;
            first_ = height_;
            last_ = -1;
            inside = down ? Sweep<1>(first, last) : Sweep<-1>(last, first);
            down = !down;
        }
        return inside;
    }

    /// Whether what has been grown looks like a part of a body with a ragged rim: most rows are several runs, and if it
    /// is more than such a rim, long ones are among them. What leaves the window on its first rows is no body.
    bool IsRaggedBody() const {
        std::ptrdiff_t const height = bottom_ - top_ + 1;
        if (5 * height < Columns) return false;
        std::ptrdiff_t ragged = 0, solid = 0;
        for (std::ptrdiff_t row = top_; row <= bottom_; ++row) {
            bool several = false, sixteen = false;
            for (Lane const lane : At(row)) {
                Lane const ends = lane & ~(lane << 1U);
                several |= (ends & (ends - 1)) != 0;
                Lane const pairs = lane & lane >> 1U, fours = pairs & pairs >> 2U, eights = fours & fours >> 4U;
                sixteen |= (eights & eights >> 8U) != 0;
            }
            ragged += several ? 1 : 0;
            solid += sixteen ? 1 : 0;
        }
        return 2 * ragged >= height && (height <= RimHeight || 4 * solid >= height);
    }

    /// Sets the region in dst.
    void Store() const {
        for (std::ptrdiff_t row = top_; row <= bottom_; ++row) {
            std::uint32_t* dst = dst_ + row * stride_;
            for (Lane const lane : At(row)) {
                *dst++ |= static_cast<std::uint32_t>(lane >> 32U);
                *dst++ |= static_cast<std::uint32_t>(lane);
            }
        }
    }

private:
    using Row = Pixels<Lanes>;
    static constexpr int Words = 2 * Lanes;
    static constexpr int Columns = 64 * Lanes;
    /// Columns before the seed, at least.
    static constexpr unsigned int Before = Columns / 2 - 16;
    /// Bodies take up to 6, noise 5.
    static constexpr int MaxSweeps = 16;
    /// Rows that such a rim has at most.
    static constexpr int RimHeight = 48 / static_cast<int>(Lanes);

    Row& At(std::ptrdiff_t row) const { return rows_[static_cast<std::size_t>(row + 2)]; }

    std::uint32_t GetWord(std::ptrdiff_t row, std::ptrdiff_t i) const {
        return src_[row * stride_ + i] & ~dst_[row * stride_ + i];
    }

    [[gnu::always_inline]] inline Row GetFillable(std::ptrdiff_t row) const {
        Row fillable = EachLane<Lanes>([&](std::size_t i) {
            auto const word = static_cast<std::ptrdiff_t>(2 * i);
            return Lane{GetWord(row, word)} << 32U | GetWord(row, word + 1);
        });
        fillable.back() &= inside_;
        return fillable;
    }

    /// Whether the region goes on beside the window, from this row.
    bool Leaves(std::ptrdiff_t row) const {
        bool const left = (At(row).front() & First) != 0 && word_ > 0;
        bool const right = (At(row).back() & Last) != 0 && width_ > Columns;
        if (!left && !right) return false;
        for (std::ptrdiff_t y = std::max<std::ptrdiff_t>(row - 1, 0); y <= std::min(row + 1, height_ - 1); ++y) {
            if ((left && (GetWord(y, -1) & 1U) != 0) || (right && GetWord(y, Words) >> 31U != 0)) return true;
        }
        return false;
    }

    /// Grows rows first to last and goes on as long as rows change; false when the region leaves the window. Notes the
    /// rows behind that then have something to reach. There is one behind the first at least: sweeps begin beside rows
    /// of the region.
    template <std::ptrdiff_t Step>
    bool Sweep(std::ptrdiff_t first, std::ptrdiff_t last) {
        Row behind = At(first - Step), fillableBehind = GetFillable(first - Step);
        for (std::ptrdiff_t row = first; row >= 0 && row < height_; row += Step) {
            Row const old = At(row), ahead = At(row + Step), fillable = GetFillable(row);
            Row const pixels = EachLane<Lanes>([&](std::size_t i) { return fillable[i] | old[i]; });
            Row const touched = Spread<Lanes>(EachLane<Lanes>([&](std::size_t i) { return behind[i] | ahead[i]; }));
            Row const seeds = EachLane<Lanes>([&](std::size_t i) { return touched[i] & pixels[i] & ~old[i]; });
            if (IsEmpty<Lanes>(seeds)) {
                if ((last - row) * Step <= 0) return true;
                behind = old;
                fillableBehind = fillable;
                continue;
            }
            Row const filled = FillRuns<Lanes>(pixels, seeds);
            Row const grown = EachLane<Lanes>([&](std::size_t i) { return old[i] | filled[i]; });
            At(row) = grown;
            if (std::ptrdiff_t& outermost = Step > 0 ? bottom_ : top_; row == outermost + Step) {
                outermost = row;
                At(row + 2 * Step) = {};
            }
            if (((grown.front() & First) | (grown.back() & Last)) != 0 && Leaves(row)) return false;
            Row const beside = Spread<Lanes>(grown);
            if (!IsEmpty<Lanes>(
                    EachLane<Lanes>([&](std::size_t i) { return beside[i] & fillableBehind[i] & ~behind[i]; }))) {
                first_ = std::min(first_, row - Step);
                last_ = std::max(last_, row - Step);
            }
            behind = grown;
            fillableBehind = fillable;
        }
        return true;
    }

    std::ptrdiff_t stride_;
    std::ptrdiff_t height_;
    std::ptrdiff_t word_;  ///< the window's first, of a row
    std::uint32_t const* src_;
    std::uint32_t* dst_;
    unsigned int width_;                   ///< of what is right of the window's left side
    Lane inside_;                          ///< of the last lane, what lies inside the mask
    std::unique_ptr<Row[]> rows_;          ///< the region, from two rows before the first on
    std::ptrdiff_t top_ = 0, bottom_ = 0;  ///< rows that it has; two more on either side are empty
    std::ptrdiff_t first_ = 0, last_ = 0;  ///< rows that may have something to reach
};

/// Of the widest window.
constexpr std::size_t MaxLanes = 4;

// Never inlined: small regions would pay for what the wider windows hold.
template <std::size_t Lanes>
[[gnu::noinline]] bool FillIn(BitMask const& src, BitMask& dst, std::size_t height,
                              geometry::Point<unsigned int, 2> const& seed) {
    if (src.GetStride() < 2 * Lanes) return false;
    Window<Lanes> window(src, dst, height, seed.x);
    if (window.Grow(seed.x, static_cast<std::ptrdiff_t>(seed.y))) {
        window.Store();
        return true;
    }
    if constexpr (Lanes < MaxLanes) return window.IsRaggedBody() && FillIn<2 * Lanes>(src, dst, height, seed);
    return false;
}

}  // namespace

bool FillWindow(BitMask const& src, BitMask& dst, std::size_t height, geometry::Point<unsigned int, 2> const& seed) {
    return FillIn<1>(src, dst, height, seed);
}

}  // namespace qel::algorithm::bit_mask
