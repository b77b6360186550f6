#pragma once

#include <cstdint>

namespace qel::media::colour {

/// A colour of three 8-bit components.
struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend constexpr bool operator==(Rgb const&, Rgb const&) = default;
};

}  // namespace qel::media::colour
