#pragma once

// What the colour classifier counts, one pixel after the other.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

#include "colour_table.hpp"
#include "name_of.hpp"
#include "oklch.hpp"
#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/rectangle.hpp"
#include "qel/media/colour/rgb.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

using Rgb = media::colour::Rgb;

/// YUV of video levels as RGB, by ITU-R BT.601 with factors of 16 fraction bits.
inline Rgb FromYuv(double y, double u, double v) {
    auto const level = [&](double ofU, double ofV) {
        double const value = (76309 * (y - 16) + ofU * (u - 128) + ofV * (v - 128)) / 65536;
        return static_cast<unsigned char>(std::clamp(std::floor(value + 0.5), 0.0, 255.0));
    };
    return {level(0, 104597), level(-25674, -53278), level(132201, 0)};
}

/// How many pixels of an object are called what. foreground: null when there is none.
inline std::array<std::size_t, colour_classifier::ColourCount> CountColours(
    std::function<Rgb(unsigned int x, unsigned int y)> const& colourAt, algorithm::BitMask const* foreground,
    geometry::Rectangle<unsigned int> const& box, unsigned int rim,
    colour_classifier::ColourTable::Rules const& rules) {
    auto const width = static_cast<int>(box.x1 - box.x0), height = static_cast<int>(box.y1 - box.y0);
    std::vector<bool> pixels(static_cast<std::size_t>(width * height));
    auto const at = [&](std::vector<bool> const& of, int x, int y) {
        return x >= 0 && y >= 0 && x < width && y < height && of[static_cast<std::size_t>(y * width + x)];
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double const right = (2.0 * x + 1 - width) / width, down = (2.0 * y + 1 - height) / height;
            pixels[static_cast<std::size_t>(y * width + x)] =
                foreground
                    ? Get(*foreground, box.x0 + static_cast<unsigned int>(x), box.y0 + static_cast<unsigned int>(y))
                    : right * right + down * down <= 1;
        }
    }
    auto const all = std::count(pixels.begin(), pixels.end(), true);
    for (unsigned int i = 0; foreground && i < rim; ++i) {
        std::vector<bool> inner(pixels.size());
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                bool whole = true;
                for (int k = 0; k < 9; ++k) whole = whole && at(pixels, x + k % 3 - 1, y + k / 3 - 1);
                inner[static_cast<std::size_t>(y * width + x)] = whole;
            }
        }
        auto const left = std::count(inner.begin(), inner.end(), true);
        if (left == 0 || 3 * left < all) break;
        pixels = inner;
    }
    std::array<std::size_t, colour_classifier::ColourCount> counts{};
    auto const cell = [](int component) { return static_cast<unsigned char>(component / 8 * 8 + component / 32); };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (!at(pixels, x, y)) continue;
            Rgb const colour = colourAt(box.x0 + static_cast<unsigned int>(x), box.y0 + static_cast<unsigned int>(y));
            auto const seen =
                colour_classifier::ToOklch({cell(colour.red), cell(colour.green), cell(colour.blue)}, rules.exposure);
            ++counts[static_cast<std::size_t>(colour_classifier::NameOf(seen, rules.neutralChroma))];
        }
    }
    return counts;
}

}  // namespace qel::reference
