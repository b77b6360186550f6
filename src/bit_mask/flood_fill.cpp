// A fill by runs: each run is extended, filled at once, and the rows above and below it are searched for runs that it
// touches. dst is the record of what has been visited. Rows are searched word by word. A region of many runs is then
// grown by whole rows for as long as that gains much, and finished by runs.
#include "qel/algorithm/bit_mask/flood_fill.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "bit_mask/region_sweep.hpp"
#include "bit_mask/scan_row.hpp"
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
        while (end + 1 < width) {
            unsigned int const bit = (end + 1) % 32;
            unsigned int const count = static_cast<unsigned int>(std::countl_one((*this)[(end + 1) / 32] << bit));
            end += count;
            if (count < 32 - bit) break;
        }
        return std::min(end, width - 1);
    }

    /// Whether any pixel of columns first to last is fillable.
    bool Any(unsigned int first, unsigned int last) const {
        for (std::size_t i = first / 32; i <= last / 32; ++i) {
            std::uint32_t word = (*this)[i];
            if (i == first / 32) word &= HeadMask(first);
            if (i == last / 32) word &= TailMask(last);
            if (word != 0) return true;
        }
        return false;
    }

private:
    std::uint32_t const* src_;
    std::uint32_t const* dst_;
};

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
        lowest_ = highest_ = seed.y;
        FillRun({seed.x, seed.x, seed.y, 0, 1, 1});
        while (FillNext()) {
            if (HasManyRuns()) Sweep();
        }
    }

private:
    static constexpr std::size_t SampledRows = 16;

    /// Fills the run pending last, false when none is.
    bool FillNext() {
        if (stack_.empty()) return false;
        Range const range = stack_.top();
        stack_.pop();
        if (Row(range.row).Any(range.start, range.end)) FillRun(range);
        return true;
    }

    /// Whether the rows reached so far hold so many runs that whole rows are worth trying; looked at now and then.
    bool HasManyRuns() {
        if (filled_.size() < nextLook_) return false;
        nextLook_ *= 2;
        std::size_t const step = (highest_ - lowest_) / SampledRows + 1;
        std::size_t rows = 0, runs = 0;
        for (std::size_t y = lowest_; y <= highest_; y += step, ++rows) {
            FillableRow const row(src_ + y * stride_, dst_ + y * stride_);
            for (std::size_t i = 0; i < stride_; ++i) {
                runs += static_cast<std::size_t>(std::popcount(row[i] & ~(row[i] >> 1)));
            }
        }
        return runs >= rows * std::max<std::size_t>(8, stride_ / 6);
    }

    /// Goes on by whole rows from what has been filled; leaves pending the runs that are worth no more rows.
    void Sweep() {
        stack_ = {};
        RegionSweep sweep(srcMask_, dstMask_, height_);
        for (Range const& range : filled_) sweep.Add(range.start, range.end, range.row);
        filled_ = {};
        swept_ = true;
        sweep.Run();
        sweep.Store();
        // Single pixels: their runs are then searched for in both rows, whatever the direction.
        sweep.ForEachOpenRun([this](auto const& p) { stack_.push({p.x, p.x, p.y, 0, 1, 1}); });
    }

    FillableRow Row(unsigned int row) const { return {src_ + row * stride_, dst_ + row * stride_}; }

    void FillRun(Range const& range) {
        bool const more = !stack_.empty();
        unsigned int const start = range.extendLeft ? Row(range.row).ExtendLeft(range.start) : range.start;
        unsigned int const end = range.extendRight ? Row(range.row).ExtendRight(range.end, width_) : range.end;
        FillScanLine(dst_ + range.row * stride_, start, end, 1);
        if (!swept_) {
            filled_.push_back({start, end, range.row, 0, 0, 0});
            lowest_ = std::min(lowest_, range.row);
            highest_ = std::max(highest_, range.row);
        }
        if (range.row + 1 < height_) Scan(range, start, end, range.row + 1, true, range.direction == 0 && more);
        if (range.row > 0) Scan(range, start, end, range.row - 1, false, range.direction == 1 && more);
    }

    /// Partly: the row is the one the range was found from, and is filled beside what the range had then.
    void Scan(Range const& range, unsigned int start, unsigned int end, unsigned int row, bool direction, bool partly) {
        if (!partly) {
            ScanRow(src_, dst_, width_, stride_, stack_, start, end, row, direction);
            return;
        }
        ScanRow(src_, dst_, width_, stride_, stack_, start, range.start, row, direction);
        ScanRow(src_, dst_, width_, stride_, stack_, range.end, end, row, direction);
    }

    BitMask const& srcMask_;
    BitMask& dstMask_;
    std::uint32_t const* src_;
    std::uint32_t* dst_;
    unsigned int width_;
    unsigned int height_;
    std::size_t stride_;
    std::stack<Range> stack_;
    // What has been filled, to go on from by whole rows; not kept any longer once that has been done.
    std::vector<Range> filled_;
    std::uint32_t lowest_ = 0, highest_ = 0;
    std::size_t nextLook_ = 512;
    bool swept_ = false;
};

}  // namespace

void ScanRow(std::uint32_t const* src, std::uint32_t const* dst, unsigned int width, std::size_t stride,
             std::stack<Range>& stack, unsigned int from, unsigned int to, unsigned int row, bool direction) {
    unsigned int const low = from > 0 ? from - 1 : 0;
    unsigned int const high = to < width - 1 ? to + 1 : width - 1;
    if (from > 0 && high < low) return;
    FillableRow const fillable(src + row * stride, dst + row * stride);
    unsigned int x = low;
    while (x <= high) {
        // The next fillable pixel, then the run that it begins.
        std::uint32_t const word = fillable[x / 32] & HeadMask(x);
        unsigned int const start = x / 32 * 32 + static_cast<unsigned int>(std::countl_zero(word));
        if (word == 0 || start > high) {
            x = x / 32 * 32 + 32;
            continue;
        }
        unsigned int const end = fillable.ExtendRight(start, high + 1);
        stack.push({start, end, row, direction ? 1U : 0U, start == low ? 1U : 0U, end == high ? 1U : 0U});
        x = end + 2;
    }
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
    Fill(src, dst, height).Run(seed);
}

}  // namespace qel::algorithm::bit_mask
