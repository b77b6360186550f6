#include "name_of.hpp"

#include <cmath>

#include <gtest/gtest.h>

#include "colour_table.hpp"

namespace qel::colour_classifier {
namespace {

using media::colour::Rgb;

constexpr double NeutralChroma = 0.04;

char const* NameOfRgb(Rgb colour, double exposure = 1) {
    return BasicColours[static_cast<std::size_t>(NameOf(ToOklch(colour, exposure), NeutralChroma))].name;
}

// The values that CSS Color Module Level 4 gives for its named colours.
TEST(ToOklch, AgreesWithPublishedValues) {
    struct Case {
        char const* name;
        Rgb rgb;
        double lightness, chroma, hue;
    };
    constexpr Case Cases[] = {
        {"red", {255, 0, 0}, 0.62796, 0.25768, 29.234},
        {"lime", {0, 255, 0}, 0.86644, 0.29483, 142.495},
        {"blue", {0, 0, 255}, 0.45201, 0.31321, 264.052},
        {"green", {0, 128, 0}, 0.51975, 0.17686, 142.495},
        {"white", {255, 255, 255}, 1, 0, -1},
        {"black", {0, 0, 0}, 0, 0, -1},
        {"yellow", {255, 255, 0}, 0.96798, 0.21101, 109.77},
        {"magenta", {255, 0, 255}, 0.70167, 0.32249, 328.363},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        Oklch const colour = ToOklch(c.rgb);
        EXPECT_NEAR(colour.lightness, c.lightness, 1e-4);
        EXPECT_NEAR(colour.chroma, c.chroma, 1e-4);
        if (c.hue >= 0) {
            EXPECT_NEAR(colour.hue, c.hue, 0.02);
        }
    }
}

TEST(ToOklch, MultipliesTheLightAndCutsItOff) {
    // In linear light 188 is just over half of 255.
    EXPECT_NEAR(ToOklch({188, 188, 188}, 0.5).lightness, ToOklch({137, 137, 137}).lightness, 0.005);
    EXPECT_NEAR(ToOklch({188, 188, 188}, 4).lightness, 1, 1e-6);
    EXPECT_NEAR(ToOklch({200, 20, 20}, 0.25).hue, ToOklch({200, 20, 20}).hue, 1e-6);
}

TEST(NameOf, CallsThePublishedColoursByTheirNames) {
    for (NamedColour const& colour : BasicColours) EXPECT_STREQ(NameOfRgb(colour.rgb), colour.name);
}

TEST(NameOf, CallsColoursWhatPeopleCallThem) {
    struct Case {
        char const* colour;
        Rgb rgb;
        char const* name;
    };
    constexpr Case Cases[] = {
        {"charcoal", {48, 48, 48}, "black"},
        {"a black coat in the sun", {38, 34, 40}, "black"},
        {"noise in a shadow", {12, 6, 20}, "black"},
        {"asphalt", {130, 132, 138}, "grey"},
        {"asphalt in the evening", {140, 130, 118}, "grey"},
        {"slate", {112, 128, 144}, "grey"},
        {"a shirt", {230, 232, 240}, "white"},
        {"ivory", {255, 255, 240}, "white"},
        {"cream", {255, 253, 208}, "white"},
        {"crimson", {220, 20, 60}, "red"},
        {"maroon", {128, 0, 0}, "red"},
        {"brick red", {178, 34, 34}, "red"},
        {"a post van", {190, 40, 35}, "red"},
        {"tangerine", {255, 140, 0}, "orange"},
        {"coral", {255, 127, 80}, "orange"},
        {"a traffic cone", {240, 110, 40}, "orange"},
        {"sienna", {160, 82, 45}, "brown"},
        {"chocolate", {210, 105, 30}, "brown"},
        {"tan", {210, 180, 140}, "brown"},
        {"brick", {165, 105, 79}, "brown"},
        {"gold", {255, 215, 0}, "yellow"},
        {"khaki", {240, 230, 140}, "yellow"},
        {"a safety vest", {225, 230, 60}, "yellow"},
        {"grass", {70, 95, 40}, "green"},
        {"olive", {128, 128, 0}, "green"},
        {"mint", {152, 255, 152}, "green"},
        {"turquoise", {64, 224, 208}, "green"},
        {"dark green", {0, 100, 0}, "green"},
        {"navy", {0, 0, 128}, "blue"},
        {"jeans", {59, 91, 138}, "blue"},
        {"dark jeans", {42, 53, 80}, "blue"},
        {"pale jeans", {111, 143, 181}, "blue"},
        {"sky", {135, 206, 235}, "blue"},
        {"teal", {0, 128, 128}, "blue"},
        {"indigo", {75, 0, 130}, "purple"},
        {"aubergine", {102, 51, 153}, "purple"},
        {"lilac", {186, 85, 211}, "purple"},
        {"hot pink", {255, 105, 180}, "pink"},
        {"magenta", {255, 0, 255}, "pink"},
        {"salmon", {250, 128, 114}, "pink"},
        {"old rose", {188, 143, 143}, "pink"},
    };
    for (Case const& c : Cases) EXPECT_STREQ(NameOfRgb(c.rgb), c.name) << c.colour;
}

TEST(NameOf, HasBordersBetweenTheShades) {
    EXPECT_EQ(NameOf({0.3599, 0, 0}, NeutralChroma), Colour::Black);
    EXPECT_EQ(NameOf({0.3601, 0, 0}, NeutralChroma), Colour::Grey);
    EXPECT_EQ(NameOf({0.8699, 0, 0}, NeutralChroma), Colour::Grey);
    EXPECT_EQ(NameOf({0.8701, 0, 0}, NeutralChroma), Colour::White);
}

TEST(NameOf, WantsMoreChromaOfAColourInTheDark) {
    EXPECT_EQ(NameOf({0.6, 0.0399, 260}, NeutralChroma), Colour::Grey);
    EXPECT_EQ(NameOf({0.6, 0.0401, 260}, NeutralChroma), Colour::Blue);
    EXPECT_EQ(NameOf({0.3, 0.0499, 140}, NeutralChroma), Colour::Black);
    EXPECT_EQ(NameOf({0.3, 0.0501, 140}, NeutralChroma), Colour::Green);
    EXPECT_EQ(NameOf({0.1799, 0.2, 260}, NeutralChroma), Colour::Black);
    EXPECT_EQ(NameOf({0.6, 0.0599, 260}, 0.06), Colour::Grey);
    EXPECT_EQ(NameOf({0.6, 0.001, 260}, 0), Colour::Blue);
}

TEST(NameOf, WantsLessChromaOfDarkBlue) {
    EXPECT_EQ(NameOf({0.3, 0.0299, 260}, NeutralChroma), Colour::Black);
    EXPECT_EQ(NameOf({0.3, 0.0301, 260}, NeutralChroma), Colour::Blue);
    EXPECT_EQ(NameOf({0.1999, 0.05, 260}, NeutralChroma), Colour::Black);
    EXPECT_EQ(NameOf({0.4501, 0.0301, 260}, NeutralChroma), Colour::Grey);
    EXPECT_EQ(NameOf({0.3, 0.04, 214}, NeutralChroma), Colour::Black);
    EXPECT_EQ(NameOf({0.3, 0.04, 286}, NeutralChroma), Colour::Black);
}

TEST(NameOf, NamesEveryHue) {
    for (double lightness = 0; lightness <= 1; lightness += 0.05) {
        for (double chroma = 0; chroma <= 0.33; chroma += 0.03) {
            for (double hue = 0; hue < 360; hue += 1) {
                ASSERT_LT(static_cast<std::size_t>(NameOf({lightness, chroma, hue}, NeutralChroma)), ColourCount);
            }
        }
    }
}

TEST(NameOf, KnowsMoreColoursOfADarkPictureThatIsBrightened) {
    Rgb const jacketAtNight{40, 6, 8};
    EXPECT_STREQ(NameOfRgb(jacketAtNight), "black");
    EXPECT_STREQ(NameOfRgb(jacketAtNight, 8), "red");
}

TEST(ColourTable, HoldsTheNameOfEachCellsColour) {
    ColourTable const table({0.05, 2});
    for (int red = 0; red < 256; red += 3) {
        for (int green = 0; green < 256; green += 5) {
            for (int blue = 0; blue < 256; blue += 7) {
                auto const cell = [](int component) {
                    return static_cast<unsigned char>(component / 8 * 8 + component / 32);
                };
                Colour const expected = NameOf(ToOklch({cell(red), cell(green), cell(blue)}, 2), 0.05);
                ASSERT_EQ(table.Find(static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                                     static_cast<std::uint8_t>(blue)),
                          expected);
            }
        }
    }
}

TEST(ColourTable, CallsThePublishedColoursByTheirNames) {
    ColourTable const table;
    for (std::size_t i = 0; i < ColourCount; ++i) {
        Rgb const rgb = BasicColours[i].rgb;
        EXPECT_EQ(table.Find(rgb.red, rgb.green, rgb.blue), static_cast<Colour>(i)) << BasicColours[i].name;
    }
}

}  // namespace
}  // namespace qel::colour_classifier
