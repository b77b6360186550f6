#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "colour.hpp"

namespace qel::colour_classifier {

/// The names of all colours, looked up: a cell for the upper five bits of each of red, green and blue. A cell's name is
/// that of the colour whose components are those bits, the upper three of them repeated below: 0 is 0 and 255 is 255.
class ColourTable {
public:
    struct Rules {
        double neutralChroma = 0.04;
        /// What the light is multiplied by.
        double exposure = 1;

        bool operator==(Rules const&) const = default;
    };

    ColourTable() : ColourTable(Rules()) {}
    explicit ColourTable(Rules const& rules);

    Rules const& GetRules() const noexcept { return rules_; }

    Colour Find(std::uint8_t red, std::uint8_t green, std::uint8_t blue) const noexcept {
        return names_[std::size_t{red} >> 3U << 10U | std::size_t{green} >> 3U << 5U | std::size_t{blue} >> 3U];
    }

private:
    Rules rules_;
    std::vector<Colour> names_;
};

}  // namespace qel::colour_classifier
