#include "qel/inference/model.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inference/following.hpp"
#include "qel/inference/inference_error.hpp"
#include "support/message_of.hpp"

namespace qel::inference {
namespace {

using testing::ElementsAre;
using testing::FloatNear;
using testing::HasSubstr;
using testing::Pointwise;

/// A model that is loaded from the disk.
std::shared_ptr<Model const> LoadModel(test::MeanClassifier const& network,
                                       std::string_view metadata = R"({"max_batch_size": 4})") {
    test::ModelFolder const folder;
    folder.Write("m", network, metadata);
    backend::Manager const manager(folder.GetRoot().string());
    EXPECT_TRUE(manager.WaitUntilSettled(test::Patience));
    return manager.GetModel("m");
}

/// Matches values that are each as near as that.
auto Near(float distance, std::vector<float> const& values) { return Pointwise(FloatNear(distance), values); }

/// Sums of the channels: what goes in comes out.
test::MeanClassifier Means(unsigned int channels) {
    test::MeanClassifier network{.channels = channels, .weights = {}, .softmax = false};
    for (unsigned int i = 0; i < channels; ++i) {
        network.weights.emplace_back(channels, 0.0F);
        network.weights.back()[i] = 1;
    }
    return network;
}

/// Samples of 3 x 8 x 8 whose channels have the given values throughout.
Tensor Samples(std::vector<std::array<float, 3>> const& colours) {
    Tensor batch{{colours.size(), 3, 8, 8}, {}};
    for (auto const& colour : colours) {
        for (float const value : colour) batch.values.insert(batch.values.end(), 64, value);
    }
    return batch;
}

/// A picture of one colour with padded rows.
struct Flat {
    Flat(unsigned int width, unsigned int height, std::vector<std::uint8_t> const& colour) {
        std::size_t const rowBytes = width * colour.size() + 5;
        for (std::size_t i = 0; i < rowBytes * height; ++i) bytes.push_back(colour[i % rowBytes % colour.size()]);
        picture = {bytes.data(), static_cast<std::ptrdiff_t>(rowBytes), width, height,
                   static_cast<unsigned int>(colour.size())};
    }
    std::vector<std::uint8_t> bytes;
    Picture picture;
};

TEST(Model, RunsABatchOfTensors) {
    auto const model = LoadModel(Means(3));
    ASSERT_NE(model, nullptr);
    auto const outputs = model->Run(Samples({{1, 2, 3}, {4, 5, 6}}));
    ASSERT_EQ(outputs.size(), 1U);
    EXPECT_THAT(outputs[0].shape, ElementsAre(2, 3));
    EXPECT_THAT(outputs[0].values, Near(1e-4F, {1, 2, 3, 4, 5, 6}));
}

TEST(Model, RunsInPartsWhatExceedsItsBatchSize) {
    auto const model = LoadModel(Means(3));
    ASSERT_NE(model, nullptr);
    for (std::size_t samples = 1; samples <= 13; ++samples) {
        std::vector<std::array<float, 3>> colours;
        for (std::size_t i = 0; i < samples; ++i) colours.push_back({static_cast<float>(i), 1, 2});
        auto const outputs = model->Run(Samples(colours));
        ASSERT_EQ(outputs[0].shape, (std::vector<std::size_t>{samples, 3}));
        for (std::size_t i = 0; i < samples; ++i) {
            EXPECT_NEAR(outputs[0].values[3 * i], static_cast<float>(i), 1e-4) << i << " of " << samples;
        }
    }
}

TEST(Model, ClassifiesByTheColoursOfTheTestNetwork) {
    auto const model = LoadModel({.weights = {{1, 0, 0}, {0, 0, 1}}});
    auto const outputs = model->Run(Samples({{2, 0, 0}, {0, 9, 0}, {0, 0, 2}}));
    auto const high = static_cast<float>(1 / (1 + std::exp(-2.0))), low = 1 - high;
    EXPECT_THAT(outputs[0].values, Near(1e-5F, {high, low, 0.5F, 0.5F, low, high}));
}

TEST(Model, RunsOnPicturesOfAnySize) {
    auto const model = LoadModel(Means(3));
    PictureFormat const format{.width = 8, .height = 8};
    for (auto const& [width, height] : {std::pair(1U, 1U), {8U, 8U}, {3U, 31U}, {640U, 5U}, {33U, 64U}}) {
        Flat const flat(width, height, {10, 20, 30});
        auto const outputs = model->Run(boost::span<Picture const>(&flat.picture, 1), format);
        EXPECT_THAT(outputs[0].values, Near(1e-3F, {10, 20, 30})) << width << " x " << height;
    }
}

TEST(Model, NormalisesEachChannel) {
    auto const model = LoadModel(Means(3));
    Flat const flat(16, 16, {51, 102, 255});
    PictureFormat const format{
        .width = 8, .height = 8, .scale = 1 / 255.0F, .means = {0.1F, 0.2F, 0.5F}, .deviations = {0.5F, 2, 0.25F}};
    auto const outputs = model->Run(boost::span<Picture const>(&flat.picture, 1), format);
    EXPECT_THAT(outputs[0].values, Near(1e-4F, {0.2F, 0.1F, 2.0F}));
}

TEST(Model, BringsChannelsIntoTheOrderOfTheFormat) {
    auto const model = LoadModel(Means(3));
    Flat flat(8, 8, {10, 20, 30});
    for (ChannelOrder const order : {ChannelOrder::Rgb, ChannelOrder::Bgr}) {
        for (ChannelOrder const wanted : {ChannelOrder::Rgb, ChannelOrder::Bgr}) {
            flat.picture.order = order;
            PictureFormat const format{.width = 8, .height = 8, .order = wanted};
            auto const outputs = model->Run(boost::span<Picture const>(&flat.picture, 1), format);
            bool const same = order == wanted;
            EXPECT_NEAR(outputs[0].values[0], same ? 10 : 30, 1e-3);
            EXPECT_NEAR(outputs[0].values[2], same ? 30 : 10, 1e-3);
        }
    }
}

TEST(Model, TurnsGreyIntoColourAndColourIntoGrey) {
    Flat const grey(8, 8, {77}), red(8, 8, {200, 0, 0});
    auto const colourModel = LoadModel(Means(3));
    auto const outputs =
        colourModel->Run(boost::span<Picture const>(&grey.picture, 1), PictureFormat{.width = 8, .height = 8});
    EXPECT_THAT(outputs[0].values, Near(1e-3F, {77, 77, 77}));
    auto const greyModel = LoadModel(Means(1));
    Picture const pictures[] = {grey.picture, red.picture};
    auto const levels = greyModel->Run(pictures, {.width = 8, .height = 8, .channels = 1});
    EXPECT_THAT(levels[0].values, Near(0.5F, {77, 0.299F * 200}));
}

TEST(Model, ReadsPicturesWhoseRowsRunUpwards) {
    auto const model = LoadModel({.channels = 1, .width = 1, .height = 2, .weights = {{1}}, .softmax = false});
    std::vector<std::uint8_t> const bytes{200, 0, 0, 100};  // two rows of two columns
    Picture const picture{bytes.data() + 2, -2, 1, 2, 1};
    auto const outputs = model->Run(boost::span<Picture const>(&picture, 1), {.width = 1, .height = 2, .channels = 1});
    EXPECT_NEAR(outputs[0].values[0], 100, 1e-3) << "the first column holds 0 and 200";
}

TEST(Model, RefusesTensorsThatDoNotFit) {
    auto const model = LoadModel(Means(3));
    struct Case {
        Tensor batch;
        char const* message;
    } const cases[] = {
        {{{}, {}},
         "A batch of the shape without axes cannot have 0 values; it must have at least one sample and one value for "
         "each element"},
        {{{0, 3, 8, 8}, {}},
         "A batch of the shape ? x 3 x 8 x 8 cannot have 0 values; it must have at least one sample and one value for "
         "each element"},
        {{{1, 3, 8, 8}, {1, 2}},
         "A batch of the shape 1 x 3 x 8 x 8 cannot have 2 values; it must have at least one sample and one value for "
         "each element"},
        {{{std::numeric_limits<std::size_t>::max(), 2}, {1, 2}},
         "A batch of the shape 18446744073709551615 x 2 cannot have 2 values; it must have at least one sample and one "
         "value for each element"},
        {{{1, 3, 2, 2}, std::vector<float>(12)},
         "The network takes batches of the shape ? x 3 x 8 x 8, not 1 x 3 x 2 x 2"},
        {{{12}, std::vector<float>(12)}, "The network takes batches of the shape ? x 3 x 8 x 8, not 12"},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { (void)model->Run(c.batch); }), c.message);
    }
    EXPECT_EQ(model->Run(Samples({{1, 2, 3}}))[0].values.size(), 3U) << "runs on";
}

TEST(Model, RefusesPicturesThatDoNotFit) {
    auto const model = LoadModel(Means(3));
    Flat const good(8, 8, {1, 2, 3});
    PictureFormat const format{.width = 8, .height = 8};
    auto const message = [&](Picture picture, PictureFormat const& wanted) {
        return test::MessageOf<std::invalid_argument>(
            [&] { (void)model->Run(boost::span<Picture const>(&picture, 1), wanted); });
    };
    auto const with = [](auto value, auto change) {
        change(value);
        return value;
    };
    EXPECT_EQ(message(with(good.picture, [](Picture& p) { p.width = 0; }), format),
              "Picture 0 is 0 x 8 pixels; each side must be 1 to 16384");
    EXPECT_EQ(message(with(good.picture, [](Picture& p) { p.height = 16385; }), format),
              "Picture 0 is 8 x 16385 pixels; each side must be 1 to 16384");
    EXPECT_EQ(message(with(good.picture, [](Picture& p) { p.channels = 2; }), format),
              "Picture 0 has 2 channels; it must have 1 or 3");
    EXPECT_EQ(message(with(good.picture, [](Picture& p) { p.first = nullptr; }), format), "Picture 0 has no pixels");
    EXPECT_EQ(message(with(good.picture, [](Picture& p) { p.stride = -23; }), format),
              "Picture 0 has rows that overlap: stride -23, width 8");
    EXPECT_EQ(message(good.picture, with(format, [](PictureFormat& f) { f.height = 0; })),
              "The picture format is 8 x 0 pixels; each side must be 1 to 16384");
    EXPECT_EQ(message(good.picture, with(format, [](PictureFormat& f) { f.deviations[2] = 0; })),
              "The deviation of channel 2 must not be 0");
    EXPECT_EQ(message(good.picture, with(format, [](PictureFormat& f) { f.means[1] = NAN; })),
              "Scale, means and deviations of a picture format must be finite");
    EXPECT_EQ(message(good.picture, with(format, [](PictureFormat& f) { f.width = 9; })),
              "The network takes batches of the shape ? x 3 x 8 x 8, not 1 x 3 x 8 x 9");
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { (void)model->Run(boost::span<Picture const>(), format); }),
              "There is no picture to run the network on");
}

TEST(Model, LivesAsLongAsItIsHeldAndRunsOnManyThreads) {
    auto const model = LoadModel(Means(3));  // the manager is gone
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 25; ++i) {
                auto const value = static_cast<float>(100 * t + i);
                auto const outputs = model->Run(Samples({{value, 0, value}}));
                EXPECT_NEAR(outputs[0].values[0], value, 1e-2);
                EXPECT_NEAR(outputs[0].values[2], value, 1e-2);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace qel::inference
