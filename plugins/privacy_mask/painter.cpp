// A row of blocks at a time: the columns of the blocks that runs touch are added up, first downwards, then across a
// block; the means make one row of the picture, from which the runs of all rows are copied.
#include "painter.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace qel::privacy_mask {
namespace {

void Copy(Plane const& plane, PixelRun const& run, std::uint8_t const* from) {
    std::size_t const start = std::size_t{run.first} * plane.bytes;
    std::memcpy(plane.Row(run.row) + start, from + start, std::size_t{run.last - run.first} * plane.bytes);
}

void AddRow(std::uint8_t const* row, std::uint16_t* sums, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) sums[i] = static_cast<std::uint16_t>(sums[i] + row[i]);
}

/// Writes the mean of each channel over columns of column sums of rows samples, as often as there are columns.
template <unsigned int Bytes>
void WriteMeans(std::uint16_t const* sums, std::uint8_t* out, std::size_t columns, std::size_t rows) {
    std::uint32_t total[Bytes] = {};
    for (std::size_t i = 0; i < columns; ++i) {
        for (unsigned int channel = 0; channel < Bytes; ++channel) total[channel] += sums[Bytes * i + channel];
    }
    auto const samples = static_cast<std::uint32_t>(columns * rows);
    std::uint8_t mean[Bytes];
    for (unsigned int channel = 0; channel < Bytes; ++channel) {
        mean[channel] = static_cast<std::uint8_t>((total[channel] + samples / 2) / samples);
    }
    for (std::size_t i = 0; i < columns; ++i) std::memcpy(out + Bytes * i, mean, Bytes);
}

}  // namespace

void Painter::Blank(Plane const& plane, std::vector<PixelRun> const& runs) {
    std::size_t const bytes = plane.bytes;
    if (std::all_of(plane.black.begin(), plane.black.begin() + plane.bytes,
                    [&](std::uint8_t value) { return value == plane.black[0]; })) {
        for (PixelRun const& run : runs) {
            std::memset(plane.Row(run.row) + run.first * bytes, plane.black[0], (run.last - run.first) * bytes);
        }
        return;
    }
    row_.resize(plane.width * bytes);
    for (std::size_t i = 0; i < row_.size(); ++i) row_[i] = plane.black[i % bytes];
    for (PixelRun const& run : runs) Copy(plane, run, row_.data());
}

void Painter::Pixelate(Plane const& plane, std::vector<PixelRun> const& runs, unsigned int block) {
    std::size_t const samples = std::size_t{plane.width} * plane.bytes;
    row_.resize(samples);
    sums_.resize(samples);
    isMarked_.resize(plane.width / block);
    unsigned int const lastBlock = plane.height / block - 1;
    for (auto run = runs.begin(); run != runs.end();) {
        unsigned int const index = std::min(run->row / block, lastBlock);
        unsigned int const top = index * block, bottom = index == lastBlock ? plane.height : top + block;
        auto const end = std::find_if(run, runs.end(), [bottom](PixelRun const& next) { return next.row >= bottom; });
        MarkBlocks(run, end, block);
        AverageBlocks(plane, top, bottom, block);
        for (; run != end; ++run) Copy(plane, *run, row_.data());
    }
}

void Painter::MarkBlocks(std::vector<PixelRun>::const_iterator run, std::vector<PixelRun>::const_iterator end,
                         unsigned int block) {
    isMarked_.assign(isMarked_.size(), 0);
    std::size_t const last = isMarked_.size() - 1;
    for (; run != end; ++run) {
        auto const from = std::min<std::size_t>(run->first / block, last);
        auto const to = std::min<std::size_t>((run->last - 1) / block, last);
        std::fill(isMarked_.begin() + static_cast<std::ptrdiff_t>(from),
                  isMarked_.begin() + static_cast<std::ptrdiff_t>(to) + 1, std::uint8_t{1});
    }
}

void Painter::AverageBlocks(Plane const& plane, unsigned int top, unsigned int bottom, unsigned int block) {
    std::size_t const blocks = isMarked_.size();
    std::size_t const bytes = plane.bytes;
    auto const startOf = [&](std::size_t index) { return index == blocks ? plane.width : index * block; };
    for (std::size_t i = 0; i < blocks;) {
        if (isMarked_[i] == 0) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < blocks && isMarked_[end] != 0) ++end;
        std::size_t const from = startOf(i) * bytes, count = startOf(end) * bytes - from;
        std::fill_n(sums_.begin() + static_cast<std::ptrdiff_t>(from), count, std::uint16_t{0});
        for (unsigned int y = top; y < bottom; ++y) AddRow(plane.Row(y) + from, sums_.data() + from, count);
        auto* const writeMeans = bytes == 1 ? WriteMeans<1> : bytes == 2 ? WriteMeans<2> : WriteMeans<3>;
        for (; i < end; ++i) {
            std::size_t const start = startOf(i);
            writeMeans(sums_.data() + start * bytes, row_.data() + start * bytes, startOf(i + 1) - start, bottom - top);
        }
    }
}

}  // namespace qel::privacy_mask
