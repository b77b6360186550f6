// A region that fits into a window of few columns is grown there. Others are filled by runs: each run is extended,
// filled at once, and the rows above and below it are searched for runs that it touches. dst is the record of what has
// been visited. Rows are searched word by word; where a run keeps its ends from row to row they are compared instead.
// Where many runs come to wait, the region is grown by whole rows from there for as long as that gains much, and
// finished by runs.
#include "qel/algorithm/bit_mask/flood_fill.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "bit_mask/region_sweep.hpp"
#include "bit_mask/scan_row.hpp"
#include "bit_mask/straight_run_kernels.hpp"
#include "bit_mask/window_fill.hpp"
#include "bit_mask/word_masks.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

namespace qel::algorithm::bit_mask {
namespace {

/// The fillable pixels of one row: set in src, clear in dst.
class FillableRow {
public:
    FillableRow(std::uint32_t const* src, std::uint32_t const* dst) : src_(src), dst_(dst) {}

    std::uint32_t operator[](std::size_t i) const { return src_[i] & ~dst_[i]; }

    /// The first column of the run of fillable pixels that ends before column start; start itself without one.
    unsigned int ExtendLeft(unsigned int start) const {
        while (start > 0) {
            unsigned int const bit = (start - 1) % 32;
            unsigned int const count =
                static_cast<unsigned int>(std::countr_one((*this)[(start - 1) / 32] >> (31 - bit)));
            start -= count;
            if (count <= bit) break;
        }
        return start;
    }

    /// The last column, inside the width, of the run of fillable pixels that begins behind column end.
    unsigned int ExtendRight(unsigned int end, unsigned int width) const {
        if (end + 1 >= width) return end;
        std::size_t i = (end + 1) / 32;
        std::size_t const last = (width - 1) / 32;
        std::uint32_t ends = ~(*this)[i] & HeadMask(end + 1);
        if (ends == 0) {
            while (i + 4 < last && ((*this)[i + 1] & (*this)[i + 2] & (*this)[i + 3] & (*this)[i + 4]) == ~0U) i += 4;
        }
        while (ends == 0 && i != last) ends = ~(*this)[++i];
        unsigned int const next = static_cast<unsigned int>(32 * i) + static_cast<unsigned int>(std::countl_zero(ends));
        return std::min(next, width) - 1;
    }

    bool Has(unsigned int x) const { return ((*this)[x / 32] << x % 32 >> 31) != 0; }

private:
    std::uint32_t const* src_;
    std::uint32_t const* dst_;
};

/// ScanRow's work.
[[gnu::always_inline]] inline void PushRuns(FillableRow const& fillable, unsigned int width, std::stack<Range>& stack,
                                            unsigned int from, unsigned int to, unsigned int row, bool direction) {
    unsigned int const low = from > 0 ? from - 1 : 0;
    unsigned int const high = to < width - 1 ? to + 1 : width - 1;
    if (from > 0 && high < low) return;
    auto const push = [&](unsigned int start, unsigned int end) {
        // In place: a copy would be read before its parts have reached memory.
        stack.emplace(start, end, row, direction, start == low, end == high);
    };
    std::size_t i = low / 32;
    std::size_t const last = high / 32;
    std::uint32_t word = fillable[i] & HeadMask(low);
    while (true) {
        if (i == last) word &= TailMask(high);
        if (word == 0) {
            if (i++ == last) return;
            word = fillable[i];
            continue;
        }
        unsigned int const first = static_cast<unsigned int>(std::countl_zero(word));
        unsigned int const count = static_cast<unsigned int>(std::countl_one(word << first));
        unsigned int const start = static_cast<unsigned int>(32 * i) + first;
        if (first + count < 32) {
            push(start, start + count - 1);
            word &= ~0U >> (first + count);
            continue;
        }
        // The run reaches the word's end and may go on.
        unsigned int const end = fillable.ExtendRight(static_cast<unsigned int>(32 * i) + 31, high + 1);
        push(start, end);
        if (end == high) return;
        i = end / 32;
        word = end % 32 == 31 ? 0 : fillable[i] & (~0U >> (end % 32 + 1));
    }
}

inline void FillColumns(std::uint32_t* row, unsigned int first, unsigned int last) {
    if (first / 32 != last / 32) return FillScanLine(row, first, last, 1);
    row[first / 32] |= HeadMask(first) & TailMask(last);
}

/// One call's fill of masks that have the same size.
class Fill {
public:
    Fill(BitMask const& src, BitMask& dst, unsigned int height)
        : srcMask_(src),
          dstMask_(dst),
          src_(src.GetData().data()),
          dst_(dst.GetData().data()),
          width_(src.GetSize().width),
          height_(height),
          stride_(src.GetStride()) {}

    void Run(geometry::Point<unsigned int, 2> const& seed) {
        // The seed is filled whatever it is; every later run only for what is left of it.
        FillRun(seed.x, seed.x, seed.y, false, true, true);
        for (std::size_t filled = 1; !stack_.empty(); ++filled) {
            // Blobs, windings and whole rows leave a dozen waiting, noise and letters hundreds. Nothing is faster than
            // runs that keep their ends.
            bool const ragged = straightRows_ < 4 * filled;
            if (filled % 16 == 0 && ragged && stack_.size() >= many_) Sweep();
            if (!stack_.empty()) FillNext();
        }
    }

private:
    void FillNext() {
        // Field by field: copied at once, what was pushed just now would have to reach memory first.
        Range const& top = stack_.top();
        std::uint32_t const start = top.start, end = top.end, row = top.row;
        bool const direction = top.direction, extendLeft = top.extendLeft, extendRight = top.extendRight;
        stack_.pop();
        if (!Row(row).Has(start)) return;
        // A range that ends where what was searched did would have to be extended.
        bool const straight = start == lastFirst_ && end == lastEnd_ && !extendLeft && !extendRight;
        if (straight && (end + 1) / 32 - (start - 1) / 32 < MaxStraightWords) {
            FillStraightRun(start, end, row, direction);
        } else {
            FillRun(start, end, row, direction, extendLeft, extendRight);
        }
    }

    /// Fills a run that has the ends of the one it was found beside, and goes on from there while they stay the same.
    [[gnu::noinline]] void FillStraightRun(std::uint32_t first, std::uint32_t last, std::uint32_t y, bool direction) {
        std::size_t const left = direction ? height_ - y : y + 1;
        std::ptrdiff_t const step =
            direction ? static_cast<std::ptrdiff_t>(stride_) : -static_cast<std::ptrdiff_t>(stride_);
        std::size_t const rows = fillStraightRun_(src_ + y * stride_, dst_ + y * stride_, step, left, first, last);
        straightRows_ += rows;
        if (rows == left) return;
        auto const passed = static_cast<std::uint32_t>(rows);
        ScanRow(src_, dst_, width_, stride_, stack_, first, last, direction ? y + passed : y - passed, direction);
    }

    /// Goes on by whole rows from the pending runs; leaves pending those that are worth no more rows.
    void Sweep() {
        RegionSweep sweep(srcMask_, dstMask_, height_);
        for (; !stack_.empty(); stack_.pop()) {
            Range const range = stack_.top();
            FillableRow const row = Row(range.row);
            if (!row.Has(range.start)) continue;
            sweep.Add(row.ExtendLeft(range.start), row.ExtendRight(range.end, width_), range.row);
        }
        sweep.Run();
        sweep.Store();
        many_ *= 2;
        // Single pixels: their runs are then searched for in both rows, whatever the direction.
        sweep.ForEachOpenRun([this](unsigned int x, unsigned int y) { stack_.emplace(x, x, y, false, true, true); });
    }

    FillableRow Row(unsigned int row) const { return {src_ + row * stride_, dst_ + row * stride_}; }

    /// A range's fields.
    [[gnu::always_inline]] inline void FillRun(std::uint32_t first, std::uint32_t last, std::uint32_t y, bool direction,
                                               bool extendLeft, bool extendRight) {
        // Copies: what is written to dst could be any of the members, for all that the compiler knows.
        std::size_t const stride = stride_;
        unsigned int const width = width_;
        std::uint32_t const* const src = src_ + y * stride;
        std::uint32_t* const dst = dst_ + y * stride;
        FillableRow const row(src, dst);
        unsigned int const start = extendLeft ? row.ExtendLeft(first) : first;
        unsigned int const end = extendRight ? row.ExtendRight(last, width) : last;
        // Before the fill, or what is held in registers would have to be read again.
        lastFirst_ = start;
        lastEnd_ = end;
        FillColumns(dst, start, end);
        auto const exists = [this, y](bool below) { return below ? y + 1 < height_ : y > 0; };
        if (exists(direction)) {
            std::ptrdiff_t const step =
                direction ? static_cast<std::ptrdiff_t>(stride) : -static_cast<std::ptrdiff_t>(stride);
            PushRuns({src + step, dst + step}, width, stack_, start, end, direction ? y + 1 : y - 1, direction);
        }
        // The run that the range was found beside is filled; there is more to find only beyond its ends.
        if (!(extendLeft || extendRight) || !exists(!direction)) return;
        unsigned int const back = direction ? y - 1 : y + 1;
        if (extendLeft) ScanRow(src_, dst_, width, stride, stack_, start, first, back, !direction);
        if (extendRight) ScanRow(src_, dst_, width, stride, stack_, last, end, back, !direction);
    }

    BitMask const& srcMask_;
    BitMask& dstMask_;
    std::uint32_t const* src_;
    std::uint32_t* dst_;
    unsigned int width_;
    unsigned int height_;
    std::size_t stride_;
    std::stack<Range> stack_;
    decltype(StraightRunKernel::fill) fillStraightRun_ = GetStraightRunKernel().fill;
    std::uint32_t lastFirst_ = 0, lastEnd_ = 0;  ///< columns of the run that was extended last
    std::size_t straightRows_ = 0;               ///< filled by runs that kept their ends
    std::size_t many_ = 64;                      ///< runs pending that make whole rows worth trying
};

}  // namespace

void ScanRow(std::uint32_t const* src, std::uint32_t const* dst, unsigned int width, std::size_t stride,
             std::stack<Range>& stack, unsigned int from, unsigned int to, unsigned int row, bool direction) {
    PushRuns({src + row * stride, dst + row * stride}, width, stack, from, to, row, direction);
}

void FloodFill8Way(BitMask const& src, BitMask& dst, geometry::Point<unsigned int, 2> const& seed, unsigned int value) {
    if (dst.GetSize() != src.GetSize()) dst.Resize(src.GetSize());
    std::size_t const stride = src.GetStride();
    if (stride == 0 || seed.x >= src.GetSize().width || seed.y >= src.GetSize().height) return;
    // Rows that a store lacks, its owner having made it shorter, are not there.
    std::size_t const stored = std::min(src.GetData().size(), dst.GetData().size()) / stride;
    if (seed.y >= stored) return;
    if (value == 0) return FillScanLine(dst.GetData().data() + seed.y * stride, seed.x, seed.x, 0);
    unsigned int const height = static_cast<unsigned int>(std::min<std::size_t>(src.GetSize().height, stored));
    if (!FillWindow(src, dst, height, seed)) Fill(src, dst, height).Run(seed);
}

}  // namespace qel::algorithm::bit_mask
