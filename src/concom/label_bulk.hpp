#pragma once

#include "concom/mask_rows.hpp"

namespace qel::algorithm::concom {

/// The first set pixel at column or right of it. Requires one.
[[gnu::always_inline]] inline std::uint32_t FindNextSet(Lane const* pixels, std::uint32_t column) {
    std::uint32_t i = column / 64;
    Lane lane = pixels[i] & (~Lane{0} >> (column & 63U));
    while (lane == 0) lane = pixels[++i];
    return 64 * i + static_cast<std::uint32_t>(std::countl_zero(lane));
}

/// The first set pixel of columns first to end - 1, or end.
[[gnu::always_inline]] inline std::uint32_t FindSet(Lane const* pixels, std::uint32_t first, std::uint32_t end) {
    std::uint32_t i = first / 64;
    Lane lane = pixels[i] & (~Lane{0} >> (first & 63U));
    while (lane == 0 && 64 * (i + 1) < end) lane = pixels[++i];
    return std::min(end, 64 * i + static_cast<std::uint32_t>(std::countl_zero(lane)));
}

/// The last set pixel at column or left of it. Requires one.
[[gnu::always_inline]] inline std::uint32_t FindLastSet(Lane const* pixels, std::uint32_t column) {
    std::uint32_t i = column / 64;
    Lane lane = pixels[i] & (~Lane{0} << (~column & 63U));
    while (lane == 0) lane = pixels[--i];
    return 64 * i + 63U - static_cast<std::uint32_t>(std::countr_zero(lane));
}

/// Behind the run that holds column; the lane behind the row is clear.
[[gnu::always_inline]] inline std::uint32_t FindEndOfRun(Lane const* pixels, std::uint32_t column) {
    std::uint32_t i = column / 64;
    Lane lane = ~pixels[i] & (~Lane{0} >> (column & 63U));
    while (lane == 0) lane = ~pixels[++i];
    return 64 * i + static_cast<std::uint32_t>(std::countl_zero(lane));
}

/// The first column of the run that holds column; the lane before the row is clear.
[[gnu::always_inline]] inline std::uint32_t FindStartOfRun(Lane const* pixels, std::uint32_t column) {
    std::ptrdiff_t i = column / 64;
    Lane lane = ~pixels[i] & (~Lane{0} << (~column & 63U));
    while (lane == 0) lane = ~pixels[--i];
    return static_cast<std::uint32_t>(64 * i + 64 - std::countr_zero(lane));
}

/// Copies a row of words; clears the lane behind.
[[gnu::always_inline]] inline void LoadPixels(std::uint32_t const* words, unsigned int width, Lane* pixels) {
    std::size_t const lanes = CountLanes(width);
    for (std::size_t i = 0; i < lanes; ++i) pixels[i] = LoadLane(words, width, i);
    pixels[lanes] = 0;
}

/// Labels one row in bulk.
///
/// A run has to be looked at only where it starts with nothing above, and so starts a record, or where two segments of
/// the row above can be seen. All others take the label of the one segment they see: between the columns where it and
/// the next one come into view, their pixels are counted together.
template <std::uint32_t CombineBlob>
class BulkRow {
public:
    [[gnu::always_inline]] explicit BulkRow(MaskRows& rows) : rows_(rows) {}

    [[gnu::always_inline]] void Label() {
        LoadPixels(rows_.words + rows_.y * rows_.stride, rows_.width, rows_.pixels);
        FindTouched();
        CountPixels();
        for (std::size_t i = 0; i < lanes_; ++i) {
            for (Lane touched = rows_.touched[i]; touched != 0;) {
                auto const column = static_cast<std::uint32_t>(64 * i) +  //
                                    static_cast<std::uint32_t>(std::countl_zero(touched));
                touched &= ~ColumnBit(column);
                if (column < done_) continue;
                std::uint32_t const first = FindStartOfRun(rows_.pixels, column);
                LabelUpTo(first);
                LabelRun(first, FindEndOfRun(rows_.pixels, column));
            }
        }
        LabelUpTo(rows_.width);
        out_[0] = out_[1] = Guard;
        std::swap(rows_.aboveBegins, rows_.begins);
        std::swap(rows_.abovePixels, rows_.pixels);
        rows_.Advance();
    }

private:
    /// Marks a column of each run that has to be looked at, and the runs that start records.
    [[gnu::always_inline]] void FindTouched() {
        Lane const* const above = rows_.abovePixels;
        Lane const* const aboveLeft = above - 1;
        Lane const* const begins = rows_.aboveBegins;
        Lane const* const pixels = rows_.pixels;
        Lane const* const left = pixels - 1;
        for (std::size_t i = 0; i < lanes_; ++i) {
            Lane const starts = pixels[i] & ~(pixels[i] >> 1U | left[i] << 63U);
            if constexpr (CombineBlob == CombineBlob4Way) {
                rows_.fresh[i] = starts & ~above[i];
                rows_.touched[i] = rows_.fresh[i] | (begins[i] & pixels[i] & ~starts);
            } else {
                Lane const upLeft = above[i] >> 1U | aboveLeft[i] << 63U;
                Lane const upRight = above[i] << 1U | above[i + 1] >> 63U;
                // A segment comes into view a column before it begins. The run's first pixel sees it and another one
                // where that has a pixel straight above or on the left above.
                Lane const comes = begins[i] << 1U | begins[i + 1] >> 63U;
                Lane const another = (comes & (above[i] | upLeft)) | (begins[i] & upLeft);
                rows_.fresh[i] = starts & ~(above[i] | upLeft | upRight);
                rows_.touched[i] = rows_.fresh[i] | (comes & pixels[i] & ~starts) | (another & starts);
            }
        }
        for (std::size_t i = 0; i <= lanes_; ++i) rows_.begins[i] = 0;
    }

    [[gnu::always_inline]] void CountPixels() {
        std::uint32_t rank = 0;
        for (std::size_t i = 0; i < lanes_; ++i) {
            rows_.scan.ranks[i] = rank;
            rank += static_cast<std::uint32_t>(std::popcount(rows_.pixels[i]));
        }
        rows_.scan.ranks[lanes_] = rank;
    }

    /// Set pixels left of column.
    [[gnu::always_inline]] std::uint32_t Rank(std::uint32_t column) const {
        return rows_.scan.ranks[column / 64] +
               static_cast<std::uint32_t>(std::popcount(rows_.pixels[column / 64] >> 1U >> (~column & 63U)));
    }

    [[gnu::always_inline]] void Append(std::uint32_t first, std::uint32_t label) {
        if (out_ != rows_.current) {
            if (out_[-1].label == label) return;
            rows_.begins[first / 64] |= ColumnBit(first);
        }
        *out_++ = {.first = first, .end = 0, .label = label};
    }

    /// Labels columns up to end - 1, whose runs need no looking at.
    [[gnu::always_inline]] void LabelUpTo(std::uint32_t end) {
        while (above_[1].first < end + CombineBlob) {
            CountOnSegment(above_[1].first - CombineBlob);
            ++above_;
        }
        CountOnSegment(end);
    }

    [[gnu::always_inline]] void CountOnSegment(std::uint32_t end) {
        std::uint32_t const rank = Rank(end);
        if (rank != rank_) {
            std::uint32_t const first = FindNextSet(rows_.pixels, done_);
            InternalBlob& blob = rows_.records.blobs[above_->label];
            blob.Count(rank - rank_, first, FindLastSet(rows_.pixels, end - 1) + 1, y_);
            Append(first, above_->label);
        }
        rank_ = rank;
        done_ = end;
    }

    [[gnu::always_inline]] void LabelPart(std::uint32_t first, std::uint32_t end, std::uint32_t label) {
        rows_.records.blobs[label].Count(first, end, y_);
        Append(first, label);
    }

    /// Labels the run of columns first to end - 1 part by part.
    [[gnu::always_inline]] void LabelRun(std::uint32_t first, std::uint32_t end) {
        done_ = end;
        rank_ = Rank(end);
        bool const fresh = (rows_.fresh[first / 64] & ColumnBit(first)) != 0;
        std::uint32_t const firstSeen = first + CombineBlob + 1;
        std::uint32_t const seen = fresh ? FindSet(rows_.abovePixels, firstSeen, end + CombineBlob)
                                         : FindNextSet(rows_.abovePixels, std::max(first, CombineBlob) - CombineBlob);
        std::uint32_t label = rows_.records.Start(first, y_, fresh ? 1 : 0);
        if (fresh && seen == end + CombineBlob) {
            LabelPart(first, end, label);
            return;
        }
        while (above_[1].first <= seen) ++above_;
        if (!fresh) {
            // The run's first pixel may see the segment before as well.
            if (above_->first > seen) --above_;
            label = above_->label;
        } else {
            LabelPart(first, seen - CombineBlob, label);
            first = seen - CombineBlob;
            label = rows_.records.MergeBlobs(label, above_->label);
        }
        while (above_[1].first < end + CombineBlob) {
            ++above_;
            if (above_->label == label) continue;
            std::uint32_t const column = std::max(first, above_->first - CombineBlob);
            if (column > first) {
                // Counted before the merge: it hands over what has been counted, and nothing later.
                LabelPart(first, column, label);
                first = column;
            }
            label = rows_.records.MergeBlobs(label, above_->label);
        }
        LabelPart(first, end, label);
    }

    MaskRows& rows_;
    std::size_t const lanes_ = CountLanes(rows_.width);
    std::uint32_t const y_ = static_cast<std::uint32_t>(rows_.y);
    Segment const* above_ = rows_.above;  // the last segment that comes into view left of done_, or the first
    Segment* out_ = rows_.current;
    std::uint32_t done_ = 0;  // columns labelled
    std::uint32_t rank_ = 0;  // set pixels in them
};

/// Labels in bulk: rows up to the last, but stops behind a row without runs and before one for which there may be no
/// room.
template <std::uint32_t CombineBlob>
[[gnu::always_inline]] inline void LabelBulk(MaskRows& rows) {
    bool empty = false;
    while (rows.y != rows.last && !empty && rows.room - rows.records.count >= rows.CountNewRecords()) {
        rows.started = rows.records.count;
        BulkRow<CombineBlob>(rows).Label();
        empty = rows.above->first == Guard.first;
    }
}

}  // namespace qel::algorithm::concom
