#pragma once

#include <algorithm>
#include <random>
#include <string_view>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

/// Sets a mask's pixels where the condition on column and row holds; padding is noise, for it must not matter.
template <class Condition>
algorithm::BitMask Draw(algorithm::BitMask::Size size, std::mt19937& random, Condition condition) {
    algorithm::BitMask mask = Noise(size, 50, random);
    for (unsigned int y = 0; y < size.height; ++y) {
        for (unsigned int x = 0; x < size.width; ++x) Set(mask, x, y, condition(x, y));
    }
    return mask;
}

/// A wall that winds inwards, one pixel wide, with as much room between.
inline algorithm::BitMask Spiral(algorithm::BitMask::Size size, std::mt19937& random) {
    algorithm::BitMask mask = Draw(size, random, [](unsigned int, unsigned int) { return false; });
    int left = 0, top = 0, right = static_cast<int>(size.width) - 1, bottom = static_cast<int>(size.height) - 1;
    int x = 0, y = 0;
    auto const walk = [&](int toX, int toY) {
        while (true) {
            Set(mask, static_cast<unsigned int>(x), static_cast<unsigned int>(y));
            if (x == toX && y == toY) return;
            x += toX > x ? 1 : toX < x ? -1 : 0;
            y += toY > y ? 1 : toY < y ? -1 : 0;
        }
    };
    while (left <= right && top <= bottom) {
        walk(right, y);
        top += 2;
        if (top > bottom) break;
        walk(x, bottom);
        right -= 2;
        if (left > right) break;
        walk(left, y);
        bottom -= 2;
        if (top > bottom) break;
        walk(x, top);
        left += 2;
    }
    return mask;
}

/// Masks that give labellers trouble; their names are for messages.
struct Shape {
    std::string_view name;
    algorithm::BitMask (*make)(algorithm::BitMask::Size size, std::mt19937& random);
};

inline std::vector<Shape> const& Shapes() {
    using Size = algorithm::BitMask::Size;
    static std::vector<Shape> const All{
        {"empty", [](Size s, std::mt19937& r) { return Draw(s, r, [](unsigned, unsigned) { return false; }); }},
        {"full", [](Size s, std::mt19937& r) { return Draw(s, r, [](unsigned, unsigned) { return true; }); }},
        {"checkerboard",
         [](Size s, std::mt19937& r) { return Draw(s, r, [](unsigned x, unsigned y) { return (x + y) % 2 == 0; }); }},
        {"dots",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [](unsigned x, unsigned y) { return x % 2 == 0 && y % 2 == 0; });
         }},
        {"comb, teeth up",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [s](unsigned x, unsigned y) { return x % 2 == 0 || y + 1 == s.height; });
         }},
        {"comb, teeth down",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [](unsigned x, unsigned y) { return x % 2 == 0 || y == 0; });
         }},
        {"two combs",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [s](unsigned x, unsigned y) {
                 return y == 0 || (y + 1 != s.height ? x % 4 == 0 || x % 4 == 2 : x % 4 != 1);
             });
         }},
        {"serpentine",
         [](Size s, std::mt19937& r) {
             return Draw(
                 s, r, [s](unsigned x, unsigned y) { return y % 2 == 0 || (y % 4 == 1 ? x + 1 == s.width : x == 0); });
         }},
        {"standing serpentine",
         [](Size s, std::mt19937& r) {
             return Draw(
                 s, r, [s](unsigned x, unsigned y) { return x % 2 == 0 || (x % 4 == 1 ? y + 1 == s.height : y == 0); });
         }},
        {"nested U shapes",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [s](unsigned x, unsigned y) {
                 unsigned const side = std::min(x, s.width - 1 - x), rim = std::min(side, s.height - 1 - y);
                 return rim % 2 == 0;
             });
         }},
        {"nested arches",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [s](unsigned x, unsigned y) { return std::min({x, s.width - 1 - x, y}) % 2 == 0; });
         }},
        {"stairs",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [](unsigned x, unsigned y) { return (x + 2 * y) % 5 < 2; });
         }},
        {"stairs the other way",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [s](unsigned x, unsigned y) { return (s.width - x + 2 * y) % 5 < 2; });
         }},
        {"zigzags",
         [](Size s, std::mt19937& r) {
             return Draw(s, r, [](unsigned x, unsigned y) {
                 unsigned const phase = y % 6;
                 return x % 7 == (phase < 3 ? phase : 6 - phase);
             });
         }},
        {"runs of any length",
         [](Size s, std::mt19937& r) {
             unsigned left = 0;
             bool set = false;
             return Draw(s, r, [&](unsigned, unsigned) {
                 if (left-- == 0) {
                     set = !set;
                     left = Draw(r, 0, 12);
                 }
                 return set;
             });
         }},
        {"spiral", Spiral},
    };
    return All;
}

}  // namespace qel::reference
