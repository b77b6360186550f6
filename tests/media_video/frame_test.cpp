#include "qel/media/video/frame.hpp"

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::media::video {
namespace {

using frame::Rotation;
using std::chrono::nanoseconds;

TimePoint const Noon(nanoseconds(1772366400000000001));

/// Pixels of two planes whose sharing is counted.
template <class T>
class Frame : public testing::Test {
protected:
    typename FrameBase<T>::Planes Planes() {
        return {frame::PlaneBase<T>(8, pixels, 4), frame::PlaneBase<T>(4, pixels + 8, 4)};
    }
    std::function<void()> Ref() {
        return [this] { ++refs; };
    }
    std::function<void()> Unref() {
        return [this] { ++unrefs; };
    }
    FrameBase<T> Counted() {
        return FrameBase<T>(Planes(), ColourFormat::Nv12, 4, 2, Noon, Rotation::Clockwise90, Ref(), Unref());
    }
    FrameBase<T> Plain() {
        return FrameBase<T>(Planes(), ColourFormat::Nv12, 4, 2, Noon, Rotation::Clockwise90, {}, {});
    }
    void ExpectCalls(int expectedRefs, int expectedUnrefs) {
        EXPECT_EQ(refs, expectedRefs);
        EXPECT_EQ(unrefs, expectedUnrefs);
    }

    char pixels[16] = {};
    int refs = 0;
    int unrefs = 0;
};

using Pixels = testing::Types<void, void const>;
TYPED_TEST_SUITE(Frame, Pixels);

std::string Text(auto const& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

TYPED_TEST(Frame, HasNothingByDefault) {
    FrameBase<TypeParam> const frame;
    for (auto const& plane : frame.GetPlanes()) EXPECT_EQ(plane, (frame::PlaneBase<TypeParam>()));
    EXPECT_EQ(frame.GetPlanes().size(), 4U);
    EXPECT_EQ(FrameBase<TypeParam>::MaxPlanes, 4U);
    EXPECT_EQ(frame.GetColourFormat(), ColourFormat(0));
    EXPECT_EQ(frame.GetSize(), (geometry::Dimension<unsigned int, 2>{0, 0}));
    EXPECT_EQ(frame.GetTimestamp(), TimePoint());
    EXPECT_EQ(frame.GetRotation(), Rotation(0));
    EXPECT_FALSE(frame.GetRef());
    EXPECT_FALSE(frame.GetUnref());
    EXPECT_FALSE(frame);
    EXPECT_EQ(frame.GetIteratorLength(), 0U);
}

TYPED_TEST(Frame, HoldsWhatItWraps) {
    auto const frame = this->Counted();
    EXPECT_EQ(frame.GetPlanes(), this->Planes());
    EXPECT_EQ(frame.GetPlane(1).GetBuffer(), this->pixels + 8);
    EXPECT_EQ(frame.GetPlane(3), (frame::PlaneBase<TypeParam>()));
    EXPECT_EQ(frame.GetColourFormat(), ColourFormat::Nv12);
    EXPECT_EQ(frame.GetSize(), (geometry::Dimension<unsigned int, 2>{4, 2}));
    EXPECT_EQ(frame.GetWidth(), 4U);
    EXPECT_EQ(frame.GetHeight(), 2U);
    EXPECT_EQ(frame.GetTimestamp(), Noon);
    EXPECT_EQ(frame.GetRotation(), Rotation::Clockwise90);
    EXPECT_TRUE(frame.GetRef());
    EXPECT_TRUE(frame.GetUnref());
    EXPECT_TRUE((std::is_same_v<decltype(frame.GetPlane(0).GetBuffer()), TypeParam*>));
}

TYPED_TEST(Frame, TakesItsSizeAsADimensionToo) {
    FrameBase<TypeParam> const frame(this->Planes(), ColourFormat::Nv12, geometry::Dimension<unsigned int, 2>{4, 2},
                                     Noon, Rotation::Clockwise90, this->Ref(), this->Unref());
    EXPECT_EQ(frame, this->Plain());
    EXPECT_EQ(frame.GetWidth(), 4U);
    EXPECT_EQ(frame.GetHeight(), 2U);
    this->ExpectCalls(1, 0);
}

TYPED_TEST(Frame, CallsRefOnceWhenItWrapsAndUnrefOnceWhenItDies) {
    {
        auto const frame = this->Counted();
        this->ExpectCalls(1, 0);
    }
    this->ExpectCalls(1, 1);
}

TYPED_TEST(Frame, CallsNothingWithoutCallbacks) {
    auto frame = this->Plain();
    auto copy = frame;
    frame = copy;
    this->ExpectCalls(0, 0);
}

TYPED_TEST(Frame, RefusesOneCallbackWithoutTheOtherAndCallsNeither) {
    auto const errorOf = [&](std::function<void()> const& ref, std::function<void()> const& unref) {
        return qel::test::MessageOf<std::invalid_argument>(
            [&] { FrameBase<TypeParam>(this->Planes(), ColourFormat::Grey8, 4, 2, Noon, Rotation::None, ref, unref); });
    };
    std::string const message = "Must provide both a reference and unreference function, or neither";
    EXPECT_EQ(errorOf(this->Ref(), {}), message);
    EXPECT_EQ(errorOf({}, this->Unref()), message);
    this->ExpectCalls(0, 0);
}

TYPED_TEST(Frame, DestroysTheCallbacksItRefuses) {
    auto const token = std::make_shared<int>();
    auto const callback = [token] { FAIL(); };
    geometry::Dimension<unsigned int, 2> const size{4, 2};
    EXPECT_THROW(FrameBase<TypeParam>(this->Planes(), ColourFormat::Grey8, size, Noon, Rotation::None, {}, callback),
                 std::invalid_argument);
    EXPECT_EQ(token.use_count(), 2);  // ours and the callback above
}

TYPED_TEST(Frame, PassesOnWhatRefThrowsAndCallsNoUnref) {
    auto const fail = [] { throw std::runtime_error("no more references"); };
    EXPECT_THROW(
        FrameBase<TypeParam>(this->Planes(), ColourFormat::Grey8, 4, 2, Noon, Rotation::None, fail, this->Unref()),
        std::runtime_error);
    this->ExpectCalls(0, 0);

    bool full = false;
    auto const failWhenFull = [&] {
        if (full) throw std::runtime_error("no more references");
        ++this->refs;
    };
    FrameBase<TypeParam> frame(this->Planes(), ColourFormat::Grey8, 4, 2, Noon, Rotation::None, failWhenFull,
                               this->Unref());
    full = true;
    EXPECT_THROW((FrameBase<TypeParam>(frame)), std::runtime_error);
    FrameBase<TypeParam> target;
    EXPECT_THROW(target = frame, std::runtime_error);
    EXPECT_EQ(target, (FrameBase<TypeParam>()));
    EXPECT_TRUE(frame.GetRef());
    this->ExpectCalls(1, 0);
}

TYPED_TEST(Frame, ACopySharesThePixelsWithOneRef) {
    auto const frame = this->Counted();
    {
        auto const copy = frame;
        EXPECT_EQ(copy, frame);
        EXPECT_TRUE(copy.GetRef());
        EXPECT_TRUE(copy.GetUnref());
        this->ExpectCalls(2, 0);
    }
    this->ExpectCalls(2, 1);
}

TYPED_TEST(Frame, AMoveTakesTheCallbacksAndLeavesThePlanes) {
    static_assert(std::is_nothrow_move_constructible_v<FrameBase<TypeParam>>);
    {
        auto source = this->Counted();
        auto const target = std::move(source);
        this->ExpectCalls(1, 0);
        EXPECT_EQ(target, this->Plain());
        EXPECT_EQ(source, this->Plain());  // NOLINT(bugprone-use-after-move): the state left behind is promised
        EXPECT_FALSE(source.GetRef());
        EXPECT_FALSE(source.GetUnref());
        EXPECT_TRUE(target.GetRef());
    }
    this->ExpectCalls(1, 1);
}

TYPED_TEST(Frame, AMovedFromFrameTakesANewValue) {
    auto source = this->Counted();
    auto const target = std::move(source);
    source = target;  // NOLINT(bugprone-use-after-move): assigned here
    EXPECT_TRUE(source.GetRef());
    this->ExpectCalls(2, 0);
}

TYPED_TEST(Frame, CopyAssignmentCallsRefOnceAndReleasesTheFormerValue) {
    int formerRefs = 0, formerUnrefs = 0;
    FrameBase<TypeParam> target(
        this->Planes(), ColourFormat::Grey8, 1, 1, Noon, Rotation::None, [&] { ++formerRefs; },
        [&] { ++formerUnrefs; });
    auto const source = this->Counted();
    target = source;
    EXPECT_EQ(target, source);
    this->ExpectCalls(2, 0);
    EXPECT_EQ(formerRefs, 1);
    EXPECT_EQ(formerUnrefs, 1);
}

TYPED_TEST(Frame, MoveAssignmentCallsNoRefAndReleasesTheFormerValue) {
    int formerUnrefs = 0;
    FrameBase<TypeParam> target(
        this->Planes(), ColourFormat::Grey8, 1, 1, Noon, Rotation::None, [] {}, [&] { ++formerUnrefs; });
    auto source = this->Counted();
    target = std::move(source);
    this->ExpectCalls(1, 0);
    EXPECT_EQ(formerUnrefs, 1);
    EXPECT_FALSE(source.GetRef());  // NOLINT(bugprone-use-after-move): the state left behind is promised
    EXPECT_TRUE(target.GetRef());
}

TYPED_TEST(Frame, SelfAssignmentKeepsTheValueAndTheBalance) {
    {
        auto frame = this->Counted();
        auto& same = frame;
        frame = same;
        EXPECT_EQ(frame, this->Plain());
        this->ExpectCalls(2, 1);
        frame = std::move(same);
        EXPECT_EQ(frame, this->Plain());
        EXPECT_TRUE(frame.GetRef());
        this->ExpectCalls(2, 1);
    }
    this->ExpectCalls(2, 2);
}

TYPED_TEST(Frame, SwapExchangesEveryFieldAndCallsNothing) {
    auto left = this->Counted();
    FrameBase<TypeParam> right;
    swap(left, right);
    EXPECT_EQ(left, (FrameBase<TypeParam>()));
    EXPECT_FALSE(left.GetRef());
    EXPECT_EQ(right, this->Plain());
    EXPECT_TRUE(right.GetRef());
    video::swap(left, right);
    EXPECT_TRUE(left.GetRef());
    EXPECT_TRUE(left.GetUnref());
    EXPECT_FALSE(right.GetRef());
    swap(left, left);
    EXPECT_EQ(left, this->Plain());
    EXPECT_TRUE(left.GetRef());
    this->ExpectCalls(1, 0);
}

TYPED_TEST(Frame, IsTrueWithOneValidPlaneAndASize) {
    using Plane = frame::PlaneBase<TypeParam>;
    struct Case {
        char const* name;
        typename FrameBase<TypeParam>::Planes planes;
        unsigned int width, height;
        bool expected;
    };
    Plane const valid(4, this->pixels, 4), noSize(0, this->pixels, 4), noBuffer(4, nullptr, 4);
    Case const cases[] = {
        {"one plane", {valid}, 4, 1, true},
        {"the last plane alone", {Plane(), Plane(), Plane(), valid}, 4, 1, true},
        {"no plane", {}, 4, 1, false},
        {"planes without size or buffer", {noSize, noBuffer, noSize, noBuffer}, 4, 1, false},
        {"no width", {valid}, 0, 1, false},
        {"no height", {valid}, 4, 0, false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        FrameBase<TypeParam> const frame(c.planes, ColourFormat::Grey8, c.width, c.height, Noon, Rotation::None, {},
                                         {});
        EXPECT_EQ(static_cast<bool>(frame), c.expected);
    }
}

TYPED_TEST(Frame, ComparesEveryFieldButTheCallbacks) {
    using Video = FrameBase<TypeParam>;
    auto const planes = this->Planes();
    auto other = planes;
    other[3] = frame::PlaneBase<TypeParam>(0, nullptr, 1);
    auto const frame = this->Counted();
    EXPECT_TRUE(frame == this->Plain());
    EXPECT_FALSE(frame != this->Plain());
    EXPECT_TRUE(frame != Video(other, ColourFormat::Nv12, 4, 2, Noon, Rotation::Clockwise90, {}, {}));
    EXPECT_TRUE(frame != Video(planes, ColourFormat::Grey8, 4, 2, Noon, Rotation::Clockwise90, {}, {}));
    EXPECT_TRUE(frame != Video(planes, ColourFormat::Nv12, 5, 2, Noon, Rotation::Clockwise90, {}, {}));
    EXPECT_TRUE(frame != Video(planes, ColourFormat::Nv12, 4, 3, Noon, Rotation::Clockwise90, {}, {}));
    EXPECT_TRUE(frame != Video(planes, ColourFormat::Nv12, 4, 2, Noon + nanoseconds(1), Rotation::Clockwise90, {}, {}));
    EXPECT_TRUE(frame != Video(planes, ColourFormat::Nv12, 4, 2, Noon, Rotation::None, {}, {}));
}

TYPED_TEST(Frame, IteratesOverItsRows) {
    EXPECT_EQ(
        (FrameBase<TypeParam>({}, ColourFormat::Grey8, 640, 480, Noon, Rotation::None, {}, {}).GetIteratorLength()),
        480U);
}

TYPED_TEST(Frame, WritesAllFourPlanesAndItsFieldsWithTheQuoteBeforeThePlanesLeftOpen) {
    using Plane = frame::PlaneBase<TypeParam>;
    auto const pointer = [](std::uintptr_t address) { return reinterpret_cast<TypeParam*>(address); };
    FrameBase<TypeParam> const frame({Plane(24, pointer(0x10), 8), Plane(16, pointer(0x28), 8)}, ColourFormat::Nv12, 5,
                                     3, Noon, Rotation::Clockwise270, {}, {});
    EXPECT_EQ(
        Text(frame),
        "{\"planes\":\"[{\"size\":24,\"buffer\":\"0x10,\"stride\":8},{\"size\":16,\"buffer\":\"0x28,\"stride\":8},"
        "{\"size\":0,\"buffer\":\"0,\"stride\":0},{\"size\":0,\"buffer\":\"0,\"stride\":0}],"
        "\"colour_format\":\"Nv12\",\"width\":5,\"height\":3,"
        "\"timestamp\":\"2026-03-01T12:00:00.000000001Z\",\"rotation\":\"clockwise_270\"}");
}

TYPED_TEST(Frame, WritesAnUnknownColourFormatAsItsNumber) {
    FrameBase<TypeParam> const frame({}, ColourFormat(-1), ~0U, 0, TimePoint(), Rotation::None, {}, {});
    std::string const empty = "{\"size\":0,\"buffer\":\"0,\"stride\":0}";
    EXPECT_EQ(Text(frame), "{\"planes\":\"[" + empty + "," + empty + "," + empty + "," + empty +
                               "],\"colour_format\":-1,\"width\":4294967295,\"height\":0,"
                               "\"timestamp\":\"1970-01-01T00:00:00.000000000Z\",\"rotation\":\"none\"}");
}

TYPED_TEST(Frame, CannotWriteARotationWithoutAName) {
    for (int const rotation : {4, -1}) {
        FrameBase<TypeParam> const frame({}, ColourFormat::Grey8, 1, 1, TimePoint(), Rotation(rotation), {}, {});
        try {
            Text(frame);
            FAIL();
        } catch (std::out_of_range const& error) {
            EXPECT_STREQ(error.what(), "map::at");
        }
    }
}

}  // namespace
}  // namespace qel::media::video
