// The plug-in as a host meets it: loaded, registered, configured, published, bound.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "colour_classifier.hpp"
#include "picture_frame.hpp"
#include "plugins/plugin_test_base.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/json.hpp"

namespace qel::colour_classifier {
namespace {

namespace video = algorithm::video;
using testing::ElementsAre;
using Names = std::vector<std::string>;

class ColourClassifierPlugin : public test::PluginTest<video::passthrough::Algorithm> {
protected:
    ColourClassifierPlugin() : PluginTest("qel.algorithm.video.ColourClassifier") {}
};

TEST_F(ColourClassifierPlugin, RegistersItsAlgorithmAndMakesANodeForEachProperty) {
    ASSERT_NE(algorithm_, nullptr);
    EXPECT_EQ(algorithm_->GetTypeNameId(), hash::MurmurThree32("qel.algorithm.video.ColourClassifier"));
    EXPECT_THAT(GetPropertyNames(), ElementsAre("most_colours", "smallest_share", "smallest_shade_share", "rim",
                                                "neutral_chroma", "exposure"));
}

TEST_F(ColourClassifierPlugin, PublishesItsColours) {
    auto const published = root_->Find("algorithms.info.colour_classifier");
    ASSERT_NE(published, nullptr);
    std::string const data = configuration::json::Data(*published);
    EXPECT_THAT(data, testing::StartsWith(R"({"typename": "qel.algorithm.type.ColourClassifier","version": ")"));
    EXPECT_THAT(data, testing::HasSubstr(R"("model_status": "loaded","colours": {"black": {"r": 0,"g": 0,"b": 0},)"));
    EXPECT_THAT(data, testing::HasSubstr(R"("pink": {"r": 255,"g": 192,"b": 203})"));
    EXPECT_EQ(published->As<Map>().Find("colours")->As<Map>().GetChildren().size(), 11U);
}

TEST_F(ColourClassifierPlugin, FollowsItsNodesFromTheNextFrameOn) {
    auto const bindings = algorithm_->BindToConfiguration(*map_);
    EXPECT_EQ(bindings.size(), 6U);
    PictureFrame frame(media::ColourFormat::Nv12, 40, 20);
    frame.Paint(BasicColours[static_cast<std::size_t>(Colour::Red)].rgb);
    frame.Paint(0, 0, 10, 20, BasicColours[static_cast<std::size_t>(Colour::Blue)].rgb);
    video::Result result;
    result.objects.push_back({{0, 0, 40, 20}, 800, "motion", 1});
    result.foreground.Resize({40, 20});
    result.foreground.Fill(1);
    auto const names = [&] {
        algorithm_->Process(frame.Get(), result);
        return std::get<Names>(result.objects[0].attributes.at("colours"));
    };
    EXPECT_THAT(names(), ElementsAre("red", "blue"));
    map_->Set("most_colours", std::uint32_t{1});
    EXPECT_THAT(names(), ElementsAre("red"));
    map_->Set("most_colours", std::uint32_t{3});
    map_->Set("smallest_share", 0.4);
    EXPECT_THAT(names(), ElementsAre("red"));
    map_->Set("exposure", -4.0);
    EXPECT_THAT(names(), ElementsAre("red", "black"));
    map_->Set("smallest_shade_share", 0.6);
    EXPECT_THAT(names(), ElementsAre("red"));
}

}  // namespace
}  // namespace qel::colour_classifier
