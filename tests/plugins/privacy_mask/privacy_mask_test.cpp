#include "privacy_mask.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/video/result.hpp"
#include "reference/privacy_mask.hpp"
#include "support/message_of.hpp"

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;
using algorithm::video::Result;
using media::ColourFormat;
using reference::Samples;

constexpr ColourFormat Formats[] = {ColourFormat::Nv12, ColourFormat::Grey8, ColourFormat::Yuv24, ColourFormat::Rgb24,
                                    ColourFormat::Bgr24};

/// A frame with random pixels, random bytes between its rows, and the planes as they were.
class Noise {
public:
    Noise(ColourFormat format, BitMask::Size size, std::mt19937& random, bool upsideDown = false) : size_(size) {
        std::size_t const width = size.width, height = size.height;
        bool const wide = format != ColourFormat::Nv12 && format != ColourFormat::Grey8;
        before.push_back({width, height, wide ? 3U : 1U, {}});
        if (format == ColourFormat::Nv12) before.push_back({(width + 1) / 2, (height + 1) / 2, 2, {}});
        media::video::FrameBase<void>::Planes planes{};
        for (std::size_t i = 0; i < before.size(); ++i) {
            Samples const& plane = before[i];
            strides_[i] = plane.width * plane.bytes + random() % 9;
            memory_[i].resize(strides_[i] * plane.height);
            for (std::uint8_t& byte : memory_[i]) byte = static_cast<std::uint8_t>(random());
            auto const stride = static_cast<std::int64_t>(strides_[i]);
            std::uint8_t* const first = memory_[i].data();
            upsideDown_ = upsideDown;
            planes[i] = upsideDown ? media::video::frame::PlaneBase<void>(
                                         memory_[i].size(), first + strides_[i] * (plane.height - 1), -stride)
                                   : media::video::frame::PlaneBase<void>(memory_[i].size(), first, stride);
        }
        frame = {planes, format, size, {}, {}, {}, {}};
        original_ = memory_;
        for (std::size_t i = 0; i < before.size(); ++i) before[i] = Get(i);
    }

    /// A plane as it is now.
    Samples Get(std::size_t index) const {
        Samples plane{before[index].width, before[index].height, before[index].bytes, {}};
        for (std::size_t y = 0; y < plane.height; ++y) {
            auto const row = memory_[index].begin() + static_cast<std::ptrdiff_t>(RowStart(index, y));
            plane.data.insert(plane.data.end(), row, row + static_cast<std::ptrdiff_t>(plane.width * plane.bytes));
        }
        return plane;
    }

    void ExpectGapsUntouched() const {
        for (std::size_t i = 0; i < before.size(); ++i) {
            for (std::size_t y = 0; y < before[i].height; ++y) {
                std::size_t const used = before[i].width * before[i].bytes;
                ASSERT_EQ(std::memcmp(memory_[i].data() + RowStart(i, y) + used,
                                      original_[i].data() + RowStart(i, y) + used, strides_[i] - used),
                          0);
            }
        }
    }

    std::vector<Samples> before;
    media::video::FrameBase<void> frame;

private:
    std::size_t RowStart(std::size_t index, std::size_t y) const {
        return (upsideDown_ ? before[index].height - 1 - y : y) * strides_[index];
    }

    BitMask::Size size_;
    bool upsideDown_ = false;
    std::array<std::size_t, 2> strides_{};
    std::array<std::vector<std::uint8_t>, 2> memory_, original_;
};

void Configure(PrivacyMask& mask, std::string const& zones, Mode mode, std::uint32_t block) {
    mask.ChangeSettings([&](Settings& settings) {
        settings.zones = std::make_shared<Zones const>(ParseZones(zones));
        settings.mode = mode;
        settings.blockSize = block;
    });
}

/// Whether a zone touches a pixel, or comes so close that it is covered for safety.
bool IsCovered(Zones const& zones, BitMask::Size size, std::size_t x, std::size_t y) {
    return std::any_of(zones.begin(), zones.end(), [&](Zone const& zone) {
        return reference::Touches(zone.ToPixels(size), static_cast<double>(x), static_cast<double>(y), 0.75);
    });
}

std::vector<std::uint8_t> BlackOf(ColourFormat format, std::size_t plane) {
    if (plane == 1) return {128, 128};
    if (format == ColourFormat::Nv12) return {16};
    return format == ColourFormat::Yuv24 ? std::vector<std::uint8_t>{16, 128, 128} : std::vector<std::uint8_t>{0, 0, 0};
}

/// Masks a frame of noise and compares every byte of it with the slow model.
void Compare(PrivacyMask& mask, Noise& noise) {
    Settings const settings = mask.GetSettings();
    auto const size = noise.frame.GetSize();
    Result result;
    mask.Process(noise.frame, result);
    std::size_t const block = (settings.blockSize + 1) / 2 * 2;
    bool const blank = settings.mode == Mode::Blank || std::min(size.width, size.height) < block;
    auto const covered = [&](std::size_t x, std::size_t y) {
        return x < size.width && y < size.height && IsCovered(*settings.zones, size, x, y);
    };
    auto const pairCovered = [&](std::size_t x, std::size_t y) {
        return covered(2 * x, 2 * y) || covered(2 * x + 1, 2 * y) || covered(2 * x, 2 * y + 1) ||
               covered(2 * x + 1, 2 * y + 1);
    };
    for (std::size_t i = 0; i < noise.before.size(); ++i) {
        auto const masked = i == 0 ? std::function<bool(std::size_t, std::size_t)>(covered) : pairCovered;
        Samples const expected =
            blank ? reference::Blanked(noise.before[i], BlackOf(noise.frame.GetColourFormat(), i), masked)
                  : reference::Pixelated(noise.before[i], i == 0 ? block : block / 2, masked);
        ASSERT_EQ(noise.Get(i).data, expected.data) << "plane " << i;
    }
    noise.ExpectGapsUntouched();
    EXPECT_TRUE(result.objects.empty());
    EXPECT_TRUE(result.foreground.GetData().empty());
}

TEST(PrivacyMask, NoPixelInsideAZoneSurvivesInAnyFormatOrSize) {
    constexpr BitMask::Size Sizes[] = {{1, 1},   {2, 2},   {3, 5},   {4, 4},   {5, 4},   {16, 16},
                                       {17, 17}, {31, 33}, {33, 31}, {64, 48}, {65, 47}, {130, 67}};
    char const* const zones[] = {
        "0%,0% 100%,0% 100%,100% 0%,100%",
        "10%,10% 60%,20% 30%,90%",
        "3,3 9.5,4.25 7,12; 5,2 60,2 60,30 5,30",
        "0,0 2,0 2,2 0,2; 1,1 20,1 20,15 1,15; 90%,90% 150%,90% 150%,150%",
        "",
    };
    std::mt19937 random(11);
    PrivacyMask mask;
    for (ColourFormat const format : Formats) {
        for (BitMask::Size const size : Sizes) {
            for (char const* const text : zones) {
                for (std::uint32_t const block : {4U, 5U, 16U, 128U}) {
                    for (Mode const mode : {Mode::Pixelate, Mode::Blank}) {
                        SCOPED_TRACE(testing::Message() << "format " << static_cast<int>(format) << ", " << size.width
                                                        << " x " << size.height << ", zones " << text << ", block "
                                                        << block << (mode == Mode::Blank ? ", blank" : ""));
                        Configure(mask, text, mode, block);
                        Noise noise(format, size, random, block == 5);
                        Compare(mask, noise);
                        if (HasFatalFailure()) return;
                    }
                }
            }
        }
    }
}

TEST(PrivacyMask, TakesTheLargestBlocksWithoutOverflow) {
    PrivacyMask mask;
    Configure(mask, "0%,0% 100%,0% 100%,100% 0%,100%", Mode::Pixelate, 128);
    for (ColourFormat const format : Formats) {
        media::video::FrameBase<void> frame(format, 255, 255, {}, {});
        for (auto const& plane : frame.GetPlanes()) {
            if (plane) std::memset(plane.GetBuffer(), 255, plane.GetSize());
        }
        Result result;
        mask.Process(frame, result);
        auto const* const first = static_cast<std::uint8_t const*>(frame.GetPlane(0).GetBuffer());
        EXPECT_TRUE(std::all_of(first, first + 255, [](std::uint8_t value) { return value == 255; }));
    }
}

TEST(PrivacyMask, MasksWhatMovesWhenThatIsWanted) {
    std::mt19937 random(12);
    PrivacyMask mask;
    Configure(mask, "0,0 3,0 3,3 0,3", Mode::Blank, 16);
    mask.ChangeSettings([](Settings& settings) { settings.movingMargin = 2; });
    Result result;
    result.foreground.Resize({40, 30});
    result.foreground.GetData()[10 * 2] = 0x00080000U;  // column 12, row 10
    result.objects.push_back({{20, 20, 24, 23}, 12, "motion", 1, {}});
    struct Case {
        MovingPart part;
        geometry::Rectangle<std::size_t> hidden;  // inclusive
    };
    for (Case const& c : {Case{MovingPart::None, {1, 1, 0, 0}}, Case{MovingPart::Shapes, {10, 8, 14, 12}},
                          Case{MovingPart::Boxes, {18, 18, 25, 24}}}) {
        for (ColourFormat const format : Formats) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(c.part) << ", format " << static_cast<int>(format));
            mask.ChangeSettings([&](Settings& settings) { settings.movingPart = c.part; });
            Noise noise(format, {40, 30}, random);
            mask.Process(noise.frame, result);
            auto const hidden = [&](std::size_t x, std::size_t y) {
                return (x <= 3 && y <= 3) ||
                       (x >= c.hidden.x0 && x <= c.hidden.x1 && y >= c.hidden.y0 && y <= c.hidden.y1);
            };
            ASSERT_EQ(noise.Get(0).data, reference::Blanked(noise.before[0], BlackOf(format, 0), hidden).data);
            if (format != ColourFormat::Nv12) continue;
            auto const pairHidden = [&](std::size_t x, std::size_t y) {
                return hidden(2 * x, 2 * y) || hidden(2 * x + 1, 2 * y) || hidden(2 * x, 2 * y + 1) ||
                       hidden(2 * x + 1, 2 * y + 1);
            };
            ASSERT_EQ(noise.Get(1).data, reference::Blanked(noise.before[1], {128, 128}, pairHidden).data);
        }
    }
}

TEST(PrivacyMask, ForgetsWhatMovedInTheFrameBefore) {
    PrivacyMask mask;
    mask.ChangeSettings([](Settings& settings) {
        settings.mode = Mode::Blank;
        settings.movingPart = MovingPart::Boxes;
    });
    std::mt19937 random(13);
    Result result;
    result.objects.push_back({{20, 20, 24, 23}, 12, "motion", 1, {}});
    Noise first(ColourFormat::Grey8, {40, 30}, random);
    mask.Process(first.frame, result);
    EXPECT_NE(first.Get(0).data, first.before[0].data);
    Noise second(ColourFormat::Grey8, {40, 30}, random);
    Result empty;
    mask.Process(second.frame, empty);
    EXPECT_EQ(second.Get(0).data, second.before[0].data);
}

TEST(PrivacyMask, FollowsTheSizeOfTheFrames) {
    PrivacyMask mask;
    Configure(mask, "50%,0% 100%,0% 100%,100% 50%,100%", Mode::Blank, 16);
    std::mt19937 random(14);
    for (BitMask::Size const size : {BitMask::Size{40, 30}, {80, 20}, {40, 30}}) {
        Noise noise(ColourFormat::Nv12, size, random);
        Compare(mask, noise);
    }
}

TEST(PrivacyMask, RefusesFramesThatCannotBeMaskedAndLeavesThemAlone) {
    PrivacyMask mask;
    Configure(mask, "0,0 9,0 9,9", Mode::Blank, 16);
    Result result;
    media::video::FrameBase<void> empty;
    EXPECT_THROW(mask.Process(empty, result), std::invalid_argument);
    std::vector<std::uint8_t> pixels(100 * 10, 7);
    using Plane = media::video::frame::PlaneBase<void>;
    struct Case {
        char const* name;
        ColourFormat format;
        std::uint64_t size;
        std::int64_t stride;
        bool fine;
    };
    Case const cases[] = {
        {"whole", ColourFormat::Grey8, 1000, 100, true},
        {"the last row ends with its last pixel", ColourFormat::Grey8, 990, 100, true},
        {"a byte short", ColourFormat::Grey8, 989, 100, false},
        {"too small a stride", ColourFormat::Grey8, 1000, 89, false},
        {"three bytes a pixel", ColourFormat::Rgb24, 1000, 100, false},
        {"no chroma", ColourFormat::Nv12, 1000, 100, false},
        {"an unknown format", static_cast<ColourFormat>(5), 1000, 100, false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        std::fill(pixels.begin(), pixels.end(), std::uint8_t{7});
        media::video::FrameBase<void> frame({Plane(c.size, pixels.data(), c.stride)}, c.format, 90, 10, {}, {}, {}, {});
        if (c.fine) {
            mask.Process(frame, result);
            EXPECT_EQ(pixels[0], 0);
        } else {
            EXPECT_THROW(mask.Process(frame, result), std::invalid_argument);
            EXPECT_TRUE(std::all_of(pixels.begin(), pixels.end(), [](std::uint8_t value) { return value == 7; }));
        }
    }
}

TEST(PrivacyMask, RefusesToMaskShapesThatNobodyFound) {
    PrivacyMask mask;
    mask.ChangeSettings([](Settings& settings) { settings.movingPart = MovingPart::Shapes; });
    media::video::FrameBase<void> frame(ColourFormat::Grey8, 32, 32, {}, {});
    Result result;
    EXPECT_THROW(mask.Process(frame, result), std::invalid_argument);
    result.foreground.Resize({32, 32});
    EXPECT_NO_THROW(mask.Process(frame, result));
}

TEST(PrivacyMask, IsAnInPlaceAlgorithmThatAcceptsEveryColourFormatNv12First) {
    PrivacyMask const mask;
    EXPECT_EQ(mask.GetSupportedColourFormats(), std::vector<ColourFormat>(std::begin(Formats), std::end(Formats)));
    EXPECT_EQ(mask.GetTypeNameId(), hash::MurmurThree32("qel.algorithm.video.PrivacyMask"));
    EXPECT_TRUE(mask.Is<algorithm::video::inplace::Algorithm>());
}

}  // namespace
}  // namespace qel::privacy_mask
