#include "support/masks.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <utility>

#include "support/mask_files.hpp"

namespace qel::benchmarks {
namespace {

using algorithm::BitMask;

void Set(BitMask& mask, unsigned int x, unsigned int y, bool value = true) {
    std::uint32_t& word = mask.GetData()[y * mask.GetStride() + x / 32];
    std::uint32_t const bit = 1U << (31 - x % 32);
    word = value ? word | bit : word & ~bit;
}

template <class Condition>
BitMask Draw(Size size, Condition condition) {
    BitMask mask(size);
    for (unsigned int y = 0; y < size.height; ++y) {
        for (unsigned int x = 0; x < size.width; ++x) {
            if (condition(x, y)) Set(mask, x, y);
        }
    }
    return mask;
}

/// A standing ellipse whose rim is ragged and whose inside has a few holes.
void DrawWalker(BitMask& mask, double centreX, double centreY, double height, std::mt19937& random) {
    double const radiusY = height / 2, radiusX = height / 5;
    int const width = static_cast<int>(mask.GetSize().width), rows = static_cast<int>(mask.GetSize().height);
    for (int y = std::max(0, static_cast<int>(centreY - radiusY));
         y < std::min(rows, static_cast<int>(centreY + radiusY)); ++y) {
        for (int x = std::max(0, static_cast<int>(centreX - radiusX));
             x < std::min(width, static_cast<int>(centreX + radiusX)); ++x) {
            double const distance = std::hypot((x - centreX) / radiusX, (y - centreY) / radiusY);
            double const chance = distance < 0.7 ? 0.98 : (1.0 - distance) / 0.3;
            if (static_cast<double>(random() % 1000) < 1000 * chance) {
                Set(mask, static_cast<unsigned int>(x), static_cast<unsigned int>(y));
            }
        }
    }
}

std::string videoFolder;

}  // namespace

void UseMasksOf(std::string const& folder) { videoFolder = folder; }

std::string Name(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

BitMask Noise(Size size, unsigned int percent, unsigned int grain) {
    std::mt19937 random(percent * 100 + grain);
    unsigned int const columns = size.width / grain + 1;
    std::vector<bool> grains(static_cast<std::size_t>(columns) * (size.height / grain + 1));
    std::generate(grains.begin(), grains.end(), [&] { return random() % 100 < percent; });
    return Draw(size, [&](unsigned int x, unsigned int y) { return grains[y / grain * columns + x / grain]; });
}

BitMask Motion(Size size, bool speckles) {
    std::mt19937 random(77);
    BitMask mask(size);
    double const height = size.height;
    for (int i = 0; i < 14; ++i) {
        double const x = static_cast<double>(random() % size.width), y = static_cast<double>(random() % size.height);
        DrawWalker(mask, x, y, height * (0.06 + 0.1 * y / height), random);
    }
    if (speckles) {
        for (unsigned int i = 0; i < size.width * size.height / 500; ++i) {
            Set(mask, static_cast<unsigned int>(random()) % size.width,
                static_cast<unsigned int>(random()) % size.height);
        }
    }
    return mask;
}

BitMask Text(Size size) {
    std::mt19937 random(78);
    BitMask mask(size);
    for (unsigned int line = 8; line + 14 < size.height; line += 20) {
        for (unsigned int x = 12; x + 12 < size.width; x += 9) {
            if (random() % 6 == 0) continue;
            unsigned int const strokes = static_cast<unsigned int>(random());
            for (unsigned int y = 0; y < 12; ++y) {
                for (unsigned int k = 0; k < 7; ++k) {
                    bool const upright = (k < 2 && (strokes & 1U)) || (k >= 5 && (strokes & 2U));
                    bool const level = (y < 2 && (strokes & 4U)) || (y - 5 < 2 && (strokes & 8U)) || (y >= 10);
                    if (upright || level) Set(mask, x + k, line + y);
                }
            }
        }
    }
    return mask;
}

BitMask Checkerboard(Size size) {
    return Draw(size, [](unsigned int x, unsigned int y) { return (x + y) % 2 == 0; });
}

BitMask Full(Size size) {
    return Draw(size, [](unsigned int, unsigned int) { return true; });
}

BitMask Serpentine(Size size) {
    return Draw(size, [size](unsigned int x, unsigned int y) {
        return y % 2 == 0 || (y % 4 == 1 ? x + 1 == size.width : x == 0);
    });
}

BitMask Spiral(Size size) {
    return Draw(size, [size](unsigned int x, unsigned int y) {
        unsigned int const rim = std::min({x, y, size.width - 1 - x, size.height - 1 - y});
        bool const gate = x == rim && y == rim + 1;
        return gate ? rim % 2 == 1 : rim % 2 == 0;
    });
}

std::vector<NamedMask> const& Masks(Size size) {
    static std::map<std::pair<unsigned int, unsigned int>, std::vector<NamedMask>> cache;
    std::vector<NamedMask>& masks = cache[{size.width, size.height}];
    if (!masks.empty()) return masks;
    masks = {{"motion", Motion(size, false)},
             {"motion-raw", Motion(size, true)},
             {"text", Text(size)},
             {"noise-10", Noise(size, 10, 1)},
             {"noise-30", Noise(size, 30, 1)},
             {"noise-50", Noise(size, 50, 1)},
             {"noise-70", Noise(size, 70, 1)},
             {"noise-90", Noise(size, 90, 1)},
             {"noise-50-grain-2", Noise(size, 50, 2)},
             {"noise-50-grain-8", Noise(size, 50, 8)},
             {"noise-50-grain-32", Noise(size, 50, 32)},
             {"checkerboard", Checkerboard(size)},
             {"full", Full(size)},
             {"serpentine", Serpentine(size)},
             {"spiral", Spiral(size)},
             {"empty", BitMask(size)}};
    if (!videoFolder.empty()) {
        for (NamedMask& named : ReadMasks(std::filesystem::path(videoFolder) / Name(size))) {
            masks.push_back(std::move(named));
        }
    }
    return masks;
}

}  // namespace qel::benchmarks
