#include "overlay.hpp"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "annotation_sink.hpp"
#include "canvas.hpp"
#include "error.hpp"
#include "snapshot_sink.hpp"
#include "support/temporary_directory.hpp"
#include "video_source.hpp"

namespace qel::host {
namespace {

using algorithm::video::Object;
using Frame = media::video::FrameBase<void const>;

constexpr std::uint32_t Grey = 0x646464;

Picture GreyPicture(unsigned int width, unsigned int height) {
    Picture picture({width, height});
    std::fill(picture.pixels.begin(), picture.pixels.end(), Grey);
    return picture;
}

std::uint32_t At(Picture const& picture, unsigned int x, unsigned int y) {
    return picture.pixels[std::size_t{y} * picture.size.width + x] & 0xFFFFFF;
}

Object ObjectAt(unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, std::string label = "thing") {
    return {{x0, y0, x1, y1}, 1, std::move(label), 0.5F};
}

/// How far the brightest channel of a pixel is from that of another: a coloured line is far from grey.
int Difference(std::uint32_t left, std::uint32_t right) {
    int most = 0;
    for (int shift : {0, 8, 16}) {
        most = std::max(most, std::abs(static_cast<int>(left >> shift & 255) - static_cast<int>(right >> shift & 255)));
    }
    return most;
}

TEST(DrawObjects, DrawsTheBordersOfTheBoxAndLeavesItsInsideAndTheRestAlone) {
    Picture picture = GreyPicture(320, 240);
    DrawObjects(picture, picture.size, {ObjectAt(100, 80, 160, 200)});
    for (unsigned int x : {110U, 130U, 150U}) {
        EXPECT_GT(Difference(At(picture, x, 80), Grey), 50);
        EXPECT_GT(Difference(At(picture, x, 199), Grey), 50);
    }
    for (unsigned int y : {90U, 140U, 190U}) {
        EXPECT_GT(Difference(At(picture, 100, y), Grey), 50);
        EXPECT_GT(Difference(At(picture, 159, y), Grey), 50);
        EXPECT_EQ(At(picture, 130, y), Grey);
        EXPECT_EQ(At(picture, 90, y), Grey);
        EXPECT_EQ(At(picture, 170, y), Grey);
    }
    EXPECT_EQ(At(picture, 130, 210), Grey);
    EXPECT_EQ(At(picture, 130, 50), Grey);
}

TEST(DrawObjects, WritesATagOverTheBoxOrInsideItAtTheTop) {
    Picture picture = GreyPicture(320, 240);
    DrawObjects(picture, picture.size, {ObjectAt(100, 80, 160, 200)});
    EXPECT_GT(Difference(At(picture, 101, 74), Grey), 30);
    picture = GreyPicture(320, 240);
    DrawObjects(picture, picture.size, {ObjectAt(100, 2, 160, 200)});
    EXPECT_GT(Difference(At(picture, 101, 5), Grey), 30);
}

TEST(DrawObjects, WritesHeightsAndColoursIntoTheTag) {
    // How far the tag's ground reaches to the right, in the row just above the box.
    auto const widthOf = [](std::map<std::string, algorithm::video::Attribute, std::less<>> attributes) {
        Picture picture = GreyPicture(640, 240);
        Object object = ObjectAt(10, 80, 60, 200);
        object.attributes = std::move(attributes);
        DrawObjects(picture, picture.size, {object});
        unsigned int x = 10;
        while (x < 639 && At(picture, x, 76) != Grey) ++x;
        return x;
    };
    using Names = std::vector<std::string>;
    unsigned int const plain = widthOf({});
    unsigned int const one = widthOf({{"colours", Names{"black"}}});
    unsigned int const two = widthOf({{"colours", Names{"black", "blue"}}});
    EXPECT_GT(one, plain);
    EXPECT_GT(two, one);
    EXPECT_GT(widthOf({{"colours", Names{"black", "blue"}}, {"height_m", 1.75}}), two);
    EXPECT_EQ(widthOf({{"colours", Names{}}}), plain);
    EXPECT_EQ(widthOf({{"colours", std::string("black")}, {"height_m", true}}), plain) << "of other types";
}

TEST(DrawObjects, ScalesBoxesToASmallerPicture) {
    Picture picture = GreyPicture(160, 120);
    DrawObjects(picture, {320, 240}, {ObjectAt(100, 80, 160, 200)});
    EXPECT_GT(Difference(At(picture, 50, 60), Grey), 50);
    EXPECT_GT(Difference(At(picture, 79, 60), Grey), 50);
    EXPECT_EQ(At(picture, 65, 60), Grey);
}

TEST(DrawObjects, GivesOneColourToALabelEverywhere) {
    Picture picture = GreyPicture(320, 240);
    DrawObjects(picture, picture.size, {ObjectAt(20, 80, 60, 200, "a"), ObjectAt(120, 80, 160, 200, "a")});
    EXPECT_EQ(At(picture, 20, 150), At(picture, 120, 150));
}

TEST(DrawObjects, CopesWithBoxesAtAndBeyondTheEdges) {
    Picture picture = GreyPicture(64, 48);
    Object strange = ObjectAt(60, 40, 4000000000U, 4000000000U, "a label that is far wider than the whole picture\xFF");
    strange.confidence = std::numeric_limits<float>::quiet_NaN();
    DrawObjects(picture, picture.size,
                {strange, ObjectAt(0, 0, 64, 48, ""), ObjectAt(30, 30, 30, 30), ObjectAt(9, 9, 2, 2)});
    EXPECT_GT(Difference(At(picture, 0, 47), Grey), 50);
    Picture tiny = GreyPicture(1, 1);
    DrawObjects(tiny, tiny.size, {ObjectAt(0, 0, 1, 1)});
    Picture none;
    DrawObjects(none, {}, {ObjectAt(0, 0, 1, 1)});
}

TEST(DrawObjects, AddsTheHeightToTheTagOfAMeasuredObject) {
    Object object = ObjectAt(100, 80, 160, 200);
    Picture plain = GreyPicture(320, 240), measured = plain, strange = plain;
    DrawObjects(plain, plain.size, {object});
    object.attributes["height_m"] = 1.75;
    DrawObjects(measured, measured.size, {object});
    object.attributes["height_m"] = std::string("no number");
    DrawObjects(strange, strange.size, {object});
    EXPECT_NE(measured.pixels, plain.pixels);
    EXPECT_EQ(strange.pixels, plain.pixels);
}

TEST(DrawLines, DrawsThemScaledAndLeavesTheRestAlone) {
    Picture picture = GreyPicture(160, 120);
    DrawLines(picture, {320, 240}, {{{-1000, 100}, {1000, 100}, {}, ""}});
    for (unsigned int x : {0U, 80U, 159U}) EXPECT_GT(Difference(At(picture, x, 50), Grey), 20);
    EXPECT_EQ(At(picture, 80, 47), Grey);
    EXPECT_EQ(At(picture, 80, 53), Grey);
    Picture labelled = GreyPicture(160, 120);
    DrawLines(labelled, {320, 240}, {{{-1000, 100}, {1000, 100}, {100, 100}, "5 m"}});
    EXPECT_NE(labelled.pixels, picture.pixels);
    Picture none;
    DrawLines(none, {320, 240}, {{{0, 0}, {1, 1}, {}, "x"}});
}

TEST(FitInto, KeepsTheShapeAndNeverEnlarges) {
    struct Case {
        Picture::Size size, limit, fitted;
    };
    constexpr Case Cases[] = {
        {{768, 576}, {480, 480}, {480, 360}}, {{576, 768}, {480, 480}, {360, 480}}, {{100, 50}, {480, 480}, {100, 50}},
        {{480, 480}, {480, 480}, {480, 480}}, {{5000, 2}, {480, 480}, {480, 1}},    {{1, 1}, {480, 480}, {1, 1}},
    };
    for (Case const& c : Cases) EXPECT_EQ(FitInto(c.size, c.limit), c.fitted);
}

TEST(Scale, KeepsEvenColoursToTheEdges) {
    for (Picture::Size const size : {Picture::Size{100, 75}, {33, 20}, {500, 300}}) {
        Picture const scaled = Scale(GreyPicture(200, 150), size);
        EXPECT_EQ(scaled.size, size);
        for (std::uint32_t const pixel : scaled.pixels) ASSERT_LE(Difference(pixel, Grey), 1);
    }
}

TEST(Letterbox, KeepsTheShapeInTheMiddleOfBlack) {
    struct Case {
        Picture::Size from, to;
        unsigned int left, top;
    };
    constexpr Case Cases[] = {
        {{200, 100}, {100, 100}, 0, 25}, {{10, 20}, {200, 100}, 75, 0}, {{40, 30}, {80, 60}, 0, 0},
        {{80, 60}, {40, 30}, 0, 0},      {{1, 1}, {30, 50}, 0, 10},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.left + c.top);
        Picture const framed = Letterbox(GreyPicture(c.from.width, c.from.height), c.to);
        ASSERT_EQ(framed.size, c.to);
        for (unsigned int y = 0; y < c.to.height; ++y) {
            for (unsigned int x = 0; x < c.to.width; ++x) {
                bool const inside = x >= c.left && x < c.to.width - c.left && y >= c.top && y < c.to.height - c.top;
                ASSERT_LE(Difference(At(framed, x, y), inside ? Grey : 0), 1) << x << " " << y;
            }
        }
    }
}

/// A read-only grey frame of one brightness.
Frame GreyFrame(unsigned int width, unsigned int height, std::uint8_t level, std::chrono::nanoseconds time) {
    media::video::FrameBase<void> const frame(media::ColourFormat::Grey8, width, height, {}, {});
    auto const& plane = frame.GetPlane(0);
    std::fill_n(static_cast<std::uint8_t*>(plane.GetBuffer()), plane.GetSize(), level);
    Frame::Planes planes{};
    planes[0] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
    return {planes, frame.GetColourFormat(), frame.GetSize(), media::TimePoint(time),
            {},     frame.GetRef(),          frame.GetUnref()};
}

std::uint8_t const* PixelOf(Frame const& frame, unsigned int x, unsigned int y) {
    auto const& plane = frame.GetPlane(0);
    return static_cast<std::uint8_t const*>(plane.GetBuffer()) + y * plane.GetStride() + 3 * x;
}

TEST(AnnotationSink, WritesFramesOfAnySizeAtTheSizeOfTheFirstMadeEven) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "a.mp4";
    AnnotationSink sink(path, {65, 49}, 10);
    algorithm::video::Result result;
    Frame const frames[] = {GreyFrame(65, 49, 200, std::chrono::milliseconds(500)),
                            GreyFrame(130, 98, 100, std::chrono::milliseconds(700)),
                            GreyFrame(10, 10, 50, std::chrono::milliseconds(1000))};
    for (std::uint64_t i = 0; i < 3; ++i) sink.Take({i, frames[i], result});
    sink.Finish();
    VideoSource source(Locate(path), {media::ColourFormat::Rgb24});
    int const levels[] = {200, 100, 50};
    // The third frame is a square, which leaves black on both sides.
    int const corners[] = {200, 100, 0};
    // The video begins with its first frame, whatever the time of that.
    int const times[] = {0, 200, 500};
    for (int i = 0; i < 3; ++i) {
        auto const frame = source.Read();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->GetWidth(), 66U);
        EXPECT_EQ(frame->GetHeight(), 50U);
        EXPECT_NEAR(*PixelOf(*frame, 33, 25), levels[i], 6);
        EXPECT_NEAR(*PixelOf(*frame, 65, 49), corners[i], 6);
        EXPECT_EQ(frame->GetTimestamp().time_since_epoch(), std::chrono::milliseconds(times[i]));
    }
    EXPECT_FALSE(source.Read());
}

TEST(AnnotationSink, MayEndWithoutAFrame) {
    test::TemporaryDirectory const directory;
    AnnotationSink sink(directory / "a.mp4", {64, 48}, 0);
    EXPECT_NO_THROW(sink.Finish());
}

/// Makes a contact sheet of a run of frames, each as bright as its number says, and reads it back.
std::optional<Frame> SheetOf(std::uint64_t frames, unsigned int width, unsigned int height) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "sheet.png";
    SnapshotSink sink(path);
    algorithm::video::Result const result;
    for (std::uint64_t i = 0; i < frames; ++i) {
        auto const level = static_cast<std::uint8_t>(i * 255 / frames);
        sink.Take({i, GreyFrame(width, height, level, std::chrono::milliseconds(i * 100)), result});
    }
    sink.Finish();
    return VideoSource(Locate(path), {media::ColourFormat::Rgb24}).Read();
}

TEST(SnapshotSink, SpreadsNinePicturesOverARunOfAnyLength) {
    for (std::uint64_t const frames : {9U, 10U, 36U, 37U, 100U, 1000U}) {
        SCOPED_TRACE(frames);
        auto const sheet = SheetOf(frames, 40, 30);
        ASSERT_TRUE(sheet);
        ASSERT_EQ(sheet->GetWidth(), 3 * 44 + 4U);
        ASSERT_EQ(sheet->GetHeight(), 3 * 56 + 4U);
        int last = -1;
        for (unsigned int i = 0; i < 9; ++i) {
            int const level = *PixelOf(*sheet, 4 + i % 3 * 44 + 20, 4 + i / 3 * 56 + 22 + 15);
            EXPECT_GT(level, last);
            // The middle of each ninth, give or take a ninth.
            EXPECT_NEAR(level, (2 * static_cast<int>(i) + 1) * 255 / 18, 30);
            last = level;
        }
    }
}

TEST(SnapshotSink, ShowsFewerPicturesOfAShortRunAndSmallOnesOfLargeFrames) {
    EXPECT_EQ(SheetOf(1, 40, 30)->GetWidth(), 40 + 8U);
    EXPECT_EQ(SheetOf(2, 40, 30)->GetWidth(), 2 * 44 + 4U);
    EXPECT_EQ(SheetOf(4, 40, 30)->GetHeight(), 2 * 56 + 4U);
    EXPECT_EQ(SheetOf(1, 960, 1920)->GetWidth(), 240 + 8U);
    EXPECT_EQ(SheetOf(1, 960, 1920)->GetHeight(), 480 + 22 + 8U);
}

TEST(SnapshotSink, LeavesAnEmptyFileOfARunWithoutFrames) {
    test::TemporaryDirectory const directory;
    SnapshotSink sink(directory / "sheet.png");
    sink.Finish();
    EXPECT_EQ(test::ReadFile(directory / "sheet.png"), "");
}

TEST(DrawTitle, WritesWhiteOnBlackInsideItsBoxOnly) {
    Picture picture = GreyPicture(200, 60);
    DrawTitle(picture, 10, 20, 100, 20, "frame 12 with a very long text that does not fit into the box at all");
    unsigned int white = 0;
    for (unsigned int y = 0; y < 60; ++y) {
        for (unsigned int x = 0; x < 200; ++x) {
            bool const inside = x >= 10 && x < 110 && y >= 20 && y < 40;
            EXPECT_TRUE(inside || At(picture, x, y) == Grey);
            if (inside && At(picture, x, y) > 0xC0C0C0) ++white;
        }
    }
    EXPECT_GT(white, 20U);
    EXPECT_EQ(At(picture, 10, 20), 0U);
}

}  // namespace
}  // namespace qel::host
