#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame_rule.hpp"

namespace qel::motion {

/// What the loops below write about a pixel.
enum PixelFlag : std::uint8_t {
    Far = 1,         ///< too far from the background to be it
    Foreground = 2,  ///< far and not a shadow
    Strong = 4,      ///< foreground, twice as far as it had to be
    Replaced = 8,    ///< the candidate became the background
    Young = 16,      ///< the background has not been seen often enough to have settled
};

/// One row of the model's pixels.
struct ModelRow {
    std::int16_t* mean = nullptr;
    std::int16_t* spread = nullptr;
    std::int16_t* hits = nullptr;
    std::int16_t* candidate = nullptr;
    std::int16_t* candidateHits = nullptr;
};

/// The row loops of the background model, compiled for one instruction set.
struct PixelRows {
    /// Distances of a chroma row from its means, U and V added, for each of the pixels (an even number) above it.
    void (*measureChroma)(std::uint8_t const* chroma, std::int16_t const* mean, std::int16_t* distance,
                          std::size_t pixels);
    /// Classifies a row of pixels and learns from it. Requires zeroes in chromaDistance for a grey picture.
    /// Returns the number of far pixels.
    std::size_t (*applyLuma)(std::uint8_t const* luma, std::int16_t const* chromaDistance, ModelRow const& row,
                             FrameRule const& rule, std::uint8_t* flags, std::size_t pixels);
    /// Learns a chroma row, given the flags of the two rows of pixels above it. Requires an even number of pixels.
    void (*learnChroma)(std::uint8_t const* chroma, std::int16_t* mean, std::uint8_t const* upper,
                        std::uint8_t const* lower, FrameRule const& rule, std::size_t pixels);
};

/// The loops of every instruction set that this processor has, the widest last; all sets compute the same.
std::vector<PixelRows const*> RowsOfThisProcessor();

/// The widest of them, chosen once.
PixelRows const& WidestRows();

/// Packs one bit of each flag into mask words, the first pixel in the most significant bit; unused bits are clear.
void PackRow(std::uint8_t const* flags, PixelFlag flag, std::uint32_t* words, std::size_t pixels);

}  // namespace qel::motion
