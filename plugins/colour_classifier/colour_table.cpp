#include "colour_table.hpp"

#include "name_of.hpp"
#include "oklch.hpp"

namespace qel::colour_classifier {

ColourTable::ColourTable(Rules const& rules) : rules_(rules) {
    constexpr unsigned int Levels = 32;
    auto const component = [](unsigned int level) { return static_cast<unsigned char>(level << 3U | level >> 2U); };
    names_.reserve(Levels * Levels * Levels);
    for (unsigned int red = 0; red < Levels; ++red) {
        for (unsigned int green = 0; green < Levels; ++green) {
            for (unsigned int blue = 0; blue < Levels; ++blue) {
                media::colour::Rgb const colour{component(red), component(green), component(blue)};
                names_.push_back(NameOf(ToOklch(colour, rules.exposure), rules.neutralChroma));
            }
        }
    }
}

}  // namespace qel::colour_classifier
