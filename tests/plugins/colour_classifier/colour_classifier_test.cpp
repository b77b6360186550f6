#include "colour_classifier.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "picture_frame.hpp"
#include "reference/colours.hpp"
#include "support/message_of.hpp"
#include "support/picture.hpp"

namespace qel::colour_classifier {
namespace {

using algorithm::BitMask;
using algorithm::video::Object;
using algorithm::video::Result;
using media::ColourFormat;
using reference::Rgb;
using testing::ElementsAre;
using Names = std::vector<std::string>;
using Shares = std::vector<double>;

constexpr ColourFormat Formats[] = {ColourFormat::Nv12, ColourFormat::Yuv24, ColourFormat::Rgb24, ColourFormat::Bgr24};
constexpr Rgb Red{255, 0, 0}, Green{0, 128, 0}, Blue{0, 0, 255}, Grey{128, 128, 128}, White{255, 255, 255};

Object ObjectAt(unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1) {
    Object object;
    object.box = {x0, y0, x1, y1};
    return object;
}

Names NamesOf(Object const& object) { return std::get<Names>(object.attributes.at("colours")); }
Shares SharesOf(Object const& object) { return std::get<Shares>(object.attributes.at("colour_shares")); }

/// A mask of the size whose pixels are set in columns x0 to x1 - 1 of rows y0 to y1 - 1.
BitMask MaskOf(BitMask::Size size, unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1) {
    BitMask mask(size);
    for (unsigned int y = y0; y < y1; ++y) {
        for (unsigned int x = x0; x < x1; ++x) reference::Set(mask, x, y);
    }
    return mask;
}

class ColourClassifierTest : public testing::Test {
protected:
    void Set(unsigned int rim, double smallestShare = 0.12, unsigned int mostColours = 3) {
        classifier.ChangeSettings([&](Settings& settings) {
            settings.rim = rim;
            settings.smallestShare = smallestShare;
            settings.smallestShadeShare = smallestShare;
            settings.mostColours = mostColours;
        });
    }

    ColourClassifier classifier;
    Result result;
};

TEST_F(ColourClassifierTest, NamesThePublishedColoursInEveryFormat) {
    for (ColourFormat const format : Formats) {
        PictureFrame frame(format, 40, 30);
        for (NamedColour const& colour : BasicColours) {
            SCOPED_TRACE(colour.name);
            frame.Paint(colour.rgb);
            result = {{ObjectAt(5, 6, 25, 29)}, MaskOf({40, 30}, 0, 0, 40, 30)};
            classifier.Process(frame.Get(), result);
            EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre(colour.name));
            EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(1.0));
        }
    }
}

TEST_F(ColourClassifierTest, LooksAtNoPixelOutsideTheMaskOrTheBox) {
    for (ColourFormat const format : Formats) {
        PictureFrame frame(format, 80, 40);
        frame.Paint(Green);
        frame.Paint(36, 10, 46, 30, Red);
        Set(0);
        // More is set right of the box.
        result = {{ObjectAt(30, 8, 46, 32)}, MaskOf({80, 40}, 36, 10, 70, 30)};
        classifier.Process(frame.Get(), result);
        EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red"));
        EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(1.0));
    }
}

TEST_F(ColourClassifierTest, OrdersColoursByTheirShares) {
    PictureFrame frame(ColourFormat::Rgb24, 40, 20);
    frame.Paint(0, 0, 10, 20, Blue);
    frame.Paint(10, 0, 34, 20, Red);
    frame.Paint(34, 0, 40, 20, Green);
    result = {{ObjectAt(0, 0, 40, 20)}, MaskOf({40, 20}, 0, 0, 40, 20)};
    Set(0);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red", "blue", "green"));
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(0.6, 0.25, 0.15));
    Set(0, 0.151);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red", "blue"));
    Set(0, 0.15, 1);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red"));
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(0.6));
    Set(0, 1);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red")) << "the first one always counts";
}

TEST_F(ColourClassifierTest, WantsMoreOfAShadeThatIsNotTheFirst) {
    PictureFrame frame(ColourFormat::Rgb24, 40, 20);
    frame.Paint(Red);
    frame.Paint(20, 0, 26, 20, Grey);
    frame.Paint(26, 0, 32, 20, Blue);
    result = {{ObjectAt(0, 0, 40, 20)}, MaskOf({40, 20}, 0, 0, 40, 20)};
    classifier.ChangeSettings([](Settings& settings) { settings.rim = 0; });
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red", "blue")) << "15 % each";
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(0.7, 0.15));
    result.objects = {ObjectAt(17, 0, 26, 20)};
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("grey", "red"));
}

TEST_F(ColourClassifierTest, LeavesOutTheRimAsFarAsEnoughIsLeft) {
    PictureFrame frame(ColourFormat::Bgr24, 60, 60);
    frame.Paint(10, 10, 40, 40, Green);
    frame.Paint(12, 12, 38, 38, Red);
    result = {{ObjectAt(10, 10, 40, 40)}, MaskOf({60, 60}, 10, 10, 40, 40)};
    Set(0);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(0.751, 0.249));
    Set(1);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(0.862, 0.138));
    for (unsigned int const rim : {2U, 5U, 16U}) {
        Set(rim);
        classifier.Process(frame.Get(), result);
        EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red"));
    }
    // Three columns: a third is left without its rim, but for the first and the last row.
    result = {{ObjectAt(10, 10, 13, 40)}, MaskOf({60, 60}, 10, 10, 13, 40)};
    Set(1);
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("green", "red"));
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(0.711, 0.289)) << "all of it";
}

TEST_F(ColourClassifierTest, TakesTheEllipseInTheBoxWhereThereIsNoMask) {
    PictureFrame frame(ColourFormat::Rgb24, 64, 64);
    frame.Paint(Green);
    frame.Paint(22, 12, 42, 52, Red);
    result.objects = {ObjectAt(18, 4, 46, 60)};
    classifier.Process(frame.Get(), result);
    // 800 pixels of the ellipse's 1232, but for the corners of the red ones.
    EXPECT_THAT(NamesOf(result.objects[0]), ElementsAre("red", "green"));
    EXPECT_NEAR(SharesOf(result.objects[0])[0], 0.64, 0.02);
    result.objects = {ObjectAt(22, 12, 42, 52)};
    classifier.Process(frame.Get(), result);
    EXPECT_THAT(SharesOf(result.objects[0]), ElementsAre(1.0));
}

TEST_F(ColourClassifierTest, SaysNothingOfAnObjectWithoutPixels) {
    PictureFrame frame(ColourFormat::Rgb24, 20, 20);
    result.objects = {ObjectAt(5, 5, 5, 9), ObjectAt(9, 5, 6, 9), ObjectAt(20, 20, 20, 20), ObjectAt(0, 0, 9, 9)};
    for (bool const withMask : {false, true}) {
        for (Object& object : result.objects) {
            object.attributes = {{"colours", Names{"old"}}, {"colour_shares", Shares{1}}, {"id", std::int64_t{7}}};
        }
        if (withMask) result.foreground = MaskOf({20, 20}, 10, 10, 20, 20);
        classifier.Process(frame.Get(), result);
        for (std::size_t i = 0; i < result.objects.size(); ++i) {
            bool const hasPixels = i == 3 && !withMask;
            EXPECT_EQ(result.objects[i].attributes.count("colours"), hasPixels ? 1U : 0U) << i;
            EXPECT_EQ(result.objects[i].attributes.count("colour_shares"), hasPixels ? 1U : 0U) << i;
            EXPECT_EQ(result.objects[i].attributes.count("id"), 1U) << i;
        }
    }
    result.objects.clear();
    EXPECT_NO_THROW(classifier.Process(frame.Get(), result));
}

TEST_F(ColourClassifierTest, RefusesBoxesBeyondTheFrameAndChangesNothing) {
    PictureFrame frame(ColourFormat::Rgb24, 40, 30);
    for (Object const& wrong : {ObjectAt(30, 20, 41, 30), ObjectAt(30, 20, 40, 31), ObjectAt(50, 50, 60, 60),
                                ObjectAt(0, 0, 4294967295U, 4294967295U)}) {
        result = {{ObjectAt(0, 0, 9, 9), wrong}, {}};
        EXPECT_THROW(classifier.Process(frame.Get(), result), std::invalid_argument);
        EXPECT_TRUE(result.objects[0].attributes.empty());
    }
    result.objects[1] = ObjectAt(30, 20, 41, 30);
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { classifier.Process(frame.Get(), result); }),
              "Cannot name the colours of object 1: its box (30, 20) to (41, 30) reaches beyond the frame, "
              "{\"width\":40,\"height\":30}");
}

TEST_F(ColourClassifierTest, RefusesAForegroundOfAnotherSize) {
    PictureFrame frame(ColourFormat::Rgb24, 40, 30);
    result.foreground.Resize({40, 31});
    EXPECT_EQ(test::MessageOf<std::invalid_argument>([&] { classifier.Process(frame.Get(), result); }),
              "Cannot name the colours of objects: their foreground is {\"width\":40,\"height\":31}, the frame "
              "{\"width\":40,\"height\":30}");
}

TEST_F(ColourClassifierTest, RefusesFramesThatItCannotRead) {
    auto const messageOf = [&](PictureFrame::Frame const& frame) {
        return test::MessageOf<std::invalid_argument>([&] { classifier.Process(frame, result); });
    };
    EXPECT_THAT(messageOf(PictureFrame(ColourFormat::Grey8, 4, 4).Get()),
                testing::AllOf(testing::StartsWith("Cannot name the colours in the frame "),
                               testing::EndsWith(": it has none")));
    EXPECT_THAT(messageOf({}), testing::EndsWith(": it has no image"));
    for (ColourFormat const format : Formats) {
        PictureFrame::Frame const whole = PictureFrame(format, 6, 6).Get();
        for (std::size_t i = 0; i < (format == ColourFormat::Nv12 ? 2 : 1); ++i) {
            auto planes = PictureFrame::Frame::Planes{whole.GetPlane(0), whole.GetPlane(1), {}, {}};
            planes[i] = {planes[i].GetSize() - 1, planes[i].GetBuffer(), planes[i].GetStride()};
            EXPECT_THAT(messageOf({planes, format, 6, 6, {}, {}, {}, {}}),
                        testing::EndsWith(": plane " + std::to_string(i) + " is smaller than the image"));
        }
    }
    EXPECT_THAT(classifier.GetSupportedColourFormats(), testing::ElementsAreArray(Formats));
}

TEST_F(ColourClassifierTest, FollowsTheExposureAndTheNeutralChroma) {
    PictureFrame frame(ColourFormat::Rgb24, 20, 20);
    frame.Paint({26, 6, 6});
    result.objects = {ObjectAt(0, 0, 20, 20)};
    auto const nameOf = [&](double exposure, double neutralChroma) {
        classifier.ChangeSettings([&](Settings& settings) {
            settings.exposure = exposure;
            settings.neutralChroma = neutralChroma;
        });
        classifier.Process(frame.Get(), result);
        return NamesOf(result.objects[0]).front();
    };
    EXPECT_EQ(nameOf(0, 0.04), "black");
    EXPECT_EQ(nameOf(3, 0.04), "red");
    frame.Paint({120, 130, 150});
    EXPECT_EQ(nameOf(0, 0.04), "grey");
    EXPECT_EQ(nameOf(0, 0.02), "blue");
    EXPECT_EQ(nameOf(2, 0.04), "white");
}

/// Everything that is named of an object, from counts.
Object Expect(std::array<std::size_t, ColourCount> const& counts, Settings const& settings) {
    Object expected;
    double const all = static_cast<double>(std::accumulate(counts.begin(), counts.end(), std::size_t{0}));
    if (all == 0) return expected;
    std::vector<std::pair<std::size_t, std::size_t>> order;  // largest first, then as the colours are listed
    for (std::size_t i = 0; i < ColourCount; ++i) order.emplace_back(SIZE_MAX - counts[i], i);
    std::sort(order.begin(), order.end());
    Names names;
    Shares shares;
    for (auto const& [key, i] : order) {
        double const share = static_cast<double>(counts[i]) / all;
        std::string const name = BasicColours[i].name;
        bool const isShade = name == "black" || name == "white" || name == "grey";
        bool const isEnough = share >= (isShade ? settings.smallestShadeShare : settings.smallestShare);
        if (counts[i] > 0 && (names.empty() || (isEnough && names.size() < settings.mostColours))) {
            names.push_back(name);
            shares.push_back(std::round(share * 1000) / 1000);
        }
    }
    expected.attributes = {{"colours", names}, {"colour_shares", shares}};
    return expected;
}

TEST_F(ColourClassifierTest, CountsAsTheReferenceDoes) {
    std::mt19937 random(20);
    auto const draw = [&](unsigned int first, unsigned int last) { return reference::Draw(random, first, last); };
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        unsigned int const width = draw(1, 100), height = draw(1, 60);
        PictureFrame frame(Formats[round % 4], width, height, draw(0, 9));
        frame.FillWithNoise(random);
        for (unsigned int i = draw(0, 9); i > 0; --i) {
            unsigned int const x = draw(0, width - 1) / 2 * 2, y = draw(0, height - 1) / 2 * 2;
            frame.Paint(x, y, draw(x, width), draw(y, height),
                        {static_cast<unsigned char>(random()), static_cast<unsigned char>(random()),
                         static_cast<unsigned char>(random())});
        }
        Settings settings;
        settings.rim = draw(0, 4);
        settings.mostColours = draw(1, 11);
        settings.smallestShare = draw(0, 100) / 200.0;
        settings.smallestShadeShare = draw(0, 100) / 200.0;
        if (round % 16 == 0) {
            settings.neutralChroma = draw(0, 200) / 1000.0;
            settings.exposure = draw(0, 8) - 4.0;
        } else {
            settings.neutralChroma = classifier.GetSettings().neutralChroma;
            settings.exposure = classifier.GetSettings().exposure;
        }
        classifier.ChangeSettings([&](Settings& own) { own = settings; });
        bool const hasMask = draw(0, 4) != 0;
        result = {};
        // Padding set, as the operations on masks may leave it.
        if (hasMask) result.foreground = reference::Noise({width, height}, draw(1, 4) == 1 ? 50 : 97, random);
        for (unsigned int i = 0; i < 5; ++i) {
            unsigned int const x0 = draw(0, width - 1), y0 = draw(0, height - 1);
            result.objects.push_back(ObjectAt(x0, y0, draw(x0, width), draw(y0, height)));
        }
        classifier.Process(frame.Get(), result);
        for (Object const& object : result.objects) {
            auto const counts = reference::CountColours(
                [&](unsigned int x, unsigned int y) { return frame.At(x, y); }, hasMask ? &result.foreground : nullptr,
                object.box, settings.rim, {settings.neutralChroma, std::exp2(settings.exposure)});
            EXPECT_EQ(object.attributes, Expect(counts, settings).attributes);
        }
    }
}

TEST_F(ColourClassifierTest, TakesSettingsFromAnotherThreadFrameByFrame) {
    PictureFrame frame(ColourFormat::Rgb24, 40, 20);
    frame.Paint(White);
    frame.Paint(0, 0, 20, 20, Red);
    result = {{ObjectAt(0, 0, 40, 20), ObjectAt(0, 0, 40, 20)}, MaskOf({40, 20}, 0, 0, 40, 20)};
    std::atomic<bool> done = false;
    std::thread other([&] {
        for (unsigned int i = 0; !done; ++i) {
            classifier.ChangeSettings([i](Settings& settings) {
                settings.mostColours = i % 2 + 1;
                settings.neutralChroma = i % 2 == 0 ? 0.03 : 0.05;
            });
        }
    });
    for (int i = 0; i < 50; ++i) {
        classifier.Process(frame.Get(), result);
        EXPECT_EQ(NamesOf(result.objects[0]), NamesOf(result.objects[1])) << "one frame, one set of settings";
    }
    done = true;
    other.join();
}

}  // namespace
}  // namespace qel::colour_classifier
