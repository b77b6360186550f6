#include "classes.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::classifier {
namespace {

using inference::ChannelOrder;
using testing::ElementsAre;

std::vector<std::size_t> const Open{0, 0, 0, 0}, Fixed{0, 3, 224, 160};

std::string Refusal(std::string const& metadata, std::vector<std::size_t> const& shape = Fixed) {
    return test::MessageOf<std::invalid_argument>([&] { (void)ReadModelInput(metadata, shape); });
}

TEST(ModelInput, IsWhatTheNetworkSaysWhereTheMetadataIsSilent) {
    ModelInput const input = ReadModelInput(R"({"max_batch_size": 1})", Fixed);
    EXPECT_EQ(input.format, (inference::PictureFormat{.width = 160, .height = 224, .scale = 1 / 255.0F}));
    EXPECT_FALSE(input.areLogits);
    EXPECT_EQ(ReadModelInput("{}", {0, 1, 8, 9}).format.channels, 1U);
}

TEST(ModelInput, IsWhatTheMetadataSays) {
    ModelInput const input = ReadModelInput(
        R"({"input_width": 32, "input_height": 64, "channel_order": "bgr", "scale": 1, "means": [1, 2.5, -3e1],
            "standard_deviations": [58, 57.5, 57], "output": "logits", "more": {"of": ["whatever"]}})",
        Open);
    EXPECT_EQ(input.format.width, 32U);
    EXPECT_EQ(input.format.height, 64U);
    EXPECT_EQ(input.format.channels, 3U);
    EXPECT_EQ(input.format.order, ChannelOrder::Bgr);
    EXPECT_EQ(input.format.scale, 1);
    EXPECT_THAT(input.format.means, ElementsAre(1, 2.5F, -30));
    EXPECT_THAT(input.format.deviations, ElementsAre(58, 57.5F, 57));
    EXPECT_TRUE(input.areLogits);
    ModelInput const grey =
        ReadModelInput(R"({"input_width": 8, "input_height": 8, "input_channels": 1, "means": [0.5]})", Open);
    EXPECT_EQ(grey.format.channels, 1U);
    EXPECT_EQ(grey.format.means[0], 0.5F);
}

TEST(ModelInput, RefusesMembersThatAreNotAsTheyShouldBe) {
    EXPECT_EQ(Refusal("{}", Open), "\"input_width\" is missing in the metadata, and the network leaves it open");
    EXPECT_EQ(Refusal(R"({"input_width": 8})", {0, 3}),
              "\"input_height\" is missing in the metadata, and the network leaves it open");
    constexpr char const* size = "\"input_width\" of the metadata must be an integer from 1 to 16384";
    for (char const* const value : {"0", "-1", "2.5", "16385", "1e30"}) {
        EXPECT_EQ(Refusal(std::string(R"({"input_width": )") + value + "}"), size);
    }
    EXPECT_EQ(Refusal(R"({"input_width": "8"})"),
              "\"input_width\" of the metadata must be a number that fits into 32 bits");
    EXPECT_EQ(Refusal(R"({"input_channels": 2})"), "\"input_channels\" of the metadata must be 1 or 3");
    EXPECT_EQ(Refusal(R"({"channel_order": "gbr"})"), "\"channel_order\" of the metadata must be \"rgb\" or \"bgr\"");
    EXPECT_EQ(Refusal(R"({"output": 1})"), "\"output\" of the metadata must be \"probabilities\" or \"logits\"");
    EXPECT_EQ(Refusal(R"({"scale": 1e39})"), "\"scale\" of the metadata must be a number that fits into 32 bits");
    constexpr char const* list = "\"means\" of the metadata must be a list of 3 numbers, one for each channel";
    EXPECT_EQ(Refusal(R"({"means": [1, 2]})"), list);
    EXPECT_EQ(Refusal(R"({"means": 1})"), list);
    EXPECT_EQ(Refusal(R"({"means": [1, 2, null]})"),
              "\"means\" of the metadata must be a number that fits into 32 bits");
    EXPECT_EQ(Refusal(R"({"standard_deviations": [1, 0, 1]})"),
              "\"standard_deviations\" of the metadata must be other than 0");
    EXPECT_EQ(Refusal("[]"), "The metadata must be an object");
}

TEST(Likeliest, IsTheClassOfTheLargestValue) {
    auto const verdicts = FindLikeliest({{3, 2}, {0.25F, 0.75F, 1.0005F, -0.0005F, 0.5F, 0.5F}}, 2, false);
    ASSERT_EQ(verdicts.size(), 3U);
    EXPECT_EQ(verdicts[0].index, 1U);
    EXPECT_EQ(verdicts[0].confidence, 0.75F);
    EXPECT_EQ(verdicts[1].index, 0U);
    EXPECT_EQ(verdicts[1].confidence, 1.0F);
    EXPECT_EQ(verdicts[2].index, 0U) << "the first of equals";
}

TEST(Likeliest, TurnsLogitsIntoShares) {
    auto const verdicts = FindLikeliest({{2, 3, 1, 1}, {1, 3, 2, 5000, -5000, 0}}, 3, true);
    EXPECT_EQ(verdicts[0].index, 1U);
    EXPECT_NEAR(verdicts[0].confidence, 1 / (1 + std::exp(-1.0) + std::exp(-2.0)), 1e-6);
    EXPECT_EQ(verdicts[1].confidence, 1.0F);
}

TEST(Likeliest, RefusesWhatDoesNotFitTheLabels) {
    auto const message = [](inference::Tensor const& output, bool areLogits = false) {
        return test::MessageOf<std::invalid_argument>([&] { (void)FindLikeliest(output, 2, areLogits); });
    };
    EXPECT_EQ(message({{2, 3}, std::vector<float>(6)}),
              "The network gives 6 values for 2 pictures, and there are 2 labels");
    EXPECT_EQ(message({{}, {1}}), "The network gives 1 values for 0 pictures, and there are 2 labels");
    EXPECT_THAT(message({{1, 2}, {2, 3}}), testing::StartsWith("The network gives 2.000000, which is no probability"));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(message({{1, 2}, {nan, 3}}, true), testing::StartsWith("The network gives nan"));
}

}  // namespace
}  // namespace qel::classifier
