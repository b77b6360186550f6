#include "qel/algorithm/info/colour_classifier.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "info/tree.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::algorithm::info {
namespace {

using testing::ElementsAre;

using Colours = ColourClassifier::Colours;

Colours const RedAndBlue = {{"red", {255, 0, 0}}, {"blue", {1, 2, 254}}};

TEST(ColourClassifier, HoldsItsColours) {
    auto const root = Map::Make("root");
    ColourClassifier const info(*root, "name", "", RedAndBlue, Loaded, "1");
    EXPECT_EQ(info.GetColours(), RedAndBlue);
    EXPECT_STREQ(ColourClassifier::GetColoursNode(), "colours");
}

TEST(ColourClassifier, NeedsAColour) {
    auto const root = Map::Make("root");
    auto const check = [](auto const& make) {
        try {
            make();
            FAIL();
        } catch (std::invalid_argument const& error) {
            EXPECT_STREQ(error.what(), "No colours passed to qel::algorithm::info::ColourClassifier");
        }
    };
    check([&] { ColourClassifier(*root, "name", "", Colours(), Loaded, "1"); });
    check([&] { ColourClassifier(*root, "name", "", Strings{"a"}, Colours()); });
}

TEST(ColourClassifier, InsertsAMapOfColoursInAscendingOrder) {
    auto const root = Map::Make("root");
    ColourClassifier const info(*root, "name", "", RedAndBlue, Loaded, "1");
    auto const map = MakeMap(info);
    info.Set(*map);
    EXPECT_EQ(configuration::json::Data(*map),
              R"({"typename": "qel.algorithm.type.ColourClassifier","version": "1","model_status": "loaded",)"
              R"("colours": {"blue": {"r": 1,"g": 2,"b": 254},"red": {"r": 255,"g": 0,"b": 0}}})");
    EXPECT_THAT(List(*map->Find("colours")),
                ElementsAre("colours [10] qel.configuration.node.Map: The colours supported by this algorithm",
                            "colours.blue [10] qel.configuration.node.Map: ",
                            "colours.blue.r [10] qel.configuration.node.UInt8: The red component",
                            "colours.blue.g [10] qel.configuration.node.UInt8: The green component",
                            "colours.blue.b [10] qel.configuration.node.UInt8: The blue component",
                            "colours.red [10] qel.configuration.node.Map: ",
                            "colours.red.r [10] qel.configuration.node.UInt8: The red component",
                            "colours.red.g [10] qel.configuration.node.UInt8: The green component",
                            "colours.red.b [10] qel.configuration.node.UInt8: The blue component"));
}

TEST(ColourClassifier, FreezesTheColoursAndNothingElse) {
    auto const root = Map::Make("root");
    ColourClassifier const info(*root, "name", "", RedAndBlue, Loaded, "1");
    auto const map = MakeMap(info);
    info.Set(*map);
    EXPECT_TRUE(map->Find("colours")->IsFrozen());
    EXPECT_TRUE(map->Find("colours.red.g")->IsFrozen());
    EXPECT_FALSE(map->IsFrozen());
    EXPECT_FALSE(map->Find("version")->IsFrozen());
    EXPECT_THROW(map->Set("colours.red.g", static_cast<unsigned char>(1)), std::logic_error);
}

TEST(ColourClassifier, PassesOnWhatTheTreeRefuses) {
    auto const root = Map::Make("root");
    ColourClassifier const info(*root, "name", "", RedAndBlue, Loaded, "1");
    auto const map = MakeMap(info);
    info.Set(*map);
    EXPECT_THROW(info.Set(*map), std::invalid_argument);  // there are colours already
    ColourClassifier const nameless(*root, "name", "", Colours{{"", {1, 2, 3}}}, Loaded, "1");
    EXPECT_THROW(nameless.Set(*MakeMap(nameless)), std::invalid_argument);
}

}  // namespace
}  // namespace qel::algorithm::info
