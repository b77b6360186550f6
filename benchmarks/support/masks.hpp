#pragma once

#include <string>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"

namespace qel::benchmarks {

/// A mask to measure with and the name it has in the tables.
struct NamedMask {
    std::string name;
    algorithm::BitMask mask;
};

using Size = algorithm::BitMask::Size;

/// The sizes measured: all multiples of 32 wide, so that peers see the same padding (none).
constexpr Size Sizes[] = {{768, 576}, {1920, 1080}, {3840, 2160}};

std::string Name(Size size);

/// Noise of a density in percent, in squares of grain pixels.
algorithm::BitMask Noise(Size size, unsigned int percent, unsigned int grain);
/// A few walkers' silhouettes, ragged at the rim, and speckles: what a background model leaves.
algorithm::BitMask Motion(Size size, bool speckles);
/// Lines of letter-like strokes.
algorithm::BitMask Text(Size size);
algorithm::BitMask Checkerboard(Size size);
algorithm::BitMask Full(Size size);
algorithm::BitMask Serpentine(Size size);
algorithm::BitMask Spiral(Size size);

/// From now on Masks tells the masks of a video too: those that qel_demo_masks has written into a folder.
void UseMasksOf(std::string const& folder);

/// All of them, empty included, at one size.
std::vector<NamedMask> const& Masks(Size size);

}  // namespace qel::benchmarks
