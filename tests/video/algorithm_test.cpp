#include "qel/algorithm/video/algorithm.hpp"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "support/message_of.hpp"

namespace qel::algorithm::video {
namespace {

using hash::MurmurThree32;
using media::ColourFormat;
using qel::test::MessageOf;
using Formats = std::vector<ColourFormat>;

constexpr MurmurThree32 Id("qel.algorithm.video.Test");

Algorithm Make() { return {Id, Type::Passthrough, {ColourFormat::Grey8, ColourFormat::Nv12}}; }

Algorithm MakeOffline() {
    Algorithm algorithm = Make();
    algorithm.SetOfflineModeEnabled(true);
    return algorithm;
}

/// Leaves algorithm moved-from, whatever it was.
void Empty(Algorithm& algorithm) { Algorithm const taken(std::move(algorithm)); }

TEST(VideoAlgorithm, HoldsWhatItWasMadeOf) {
    Algorithm const algorithm = Make();
    EXPECT_EQ(algorithm.GetTypeNameId(), Id);
    EXPECT_EQ(algorithm.GetSupportedColourFormats(), (Formats{ColourFormat::Grey8, ColourFormat::Nv12}));
    EXPECT_FALSE(algorithm.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, MovesItsColourFormatsIn) {
    Formats formats(3, ColourFormat::Rgb24);
    ColourFormat const* const data = formats.data();
    Algorithm const algorithm(Id, Type::Inplace, std::move(formats));
    EXPECT_EQ(algorithm.GetSupportedColourFormats().data(), data);
}

TEST(VideoAlgorithm, IsOfTheKindOfItsTypeWhateverItsClass) {
    struct Case {
        char const* name;
        Type type;
        bool inplace, passthrough;
    };
    constexpr Case Cases[] = {
        {"in place", Type::Inplace, true, false},
        {"pass-through", Type::Passthrough, false, true},
        {"transform", Type::Transform, false, false},
        {"the last bit", static_cast<Type>(63), false, false},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        Algorithm const algorithm(Id, c.type, {});
        EXPECT_EQ(algorithm.Is<inplace::Algorithm>(), c.inplace);
        EXPECT_EQ(algorithm.Is<passthrough::Algorithm>(), c.passthrough);
    }
}

TEST(VideoAlgorithm, RefusesATypeThatTheFlagSetHasNoBitFor) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Algorithm(Id, static_cast<Type>(64), {ColourFormat::Grey8}); }),
              "bitset::set: __position (which is 64) >= _Nb (which is 64)");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Algorithm(Id, static_cast<Type>(0xffffffffU), {}); }),
              "bitset::set: __position (which is 4294967295) >= _Nb (which is 64)");
}

TEST(VideoAlgorithm, SwitchesItsOfflineMode) {
    Algorithm algorithm = Make();
    algorithm.SetOfflineModeEnabled(true);
    EXPECT_TRUE(algorithm.GetOfflineModeEnabled());
    algorithm.SetOfflineModeEnabled(false);
    EXPECT_FALSE(algorithm.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, ResetOfTheBaseChangesNothing) {
    Algorithm algorithm = MakeOffline();
    algorithm.Reset();
    EXPECT_EQ(algorithm, Make());
    EXPECT_TRUE(algorithm.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, CopyIsDeepAndStartsOnline) {
    Algorithm const source = MakeOffline();
    Algorithm const copy(source);
    EXPECT_EQ(copy, source);
    EXPECT_NE(copy.GetSupportedColourFormats().data(), source.GetSupportedColourFormats().data());
    EXPECT_TRUE(copy.Is<passthrough::Algorithm>());
    EXPECT_FALSE(copy.GetOfflineModeEnabled());
    EXPECT_TRUE(source.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, MoveTakesTheOfflineModeAndLeavesTheSourceEmpty) {
    Algorithm source = MakeOffline();
    ColourFormat const* const data = source.GetSupportedColourFormats().data();
    Algorithm const moved(std::move(source));
    EXPECT_EQ(moved, Make());
    EXPECT_EQ(moved.GetSupportedColourFormats().data(), data);
    EXPECT_TRUE(moved.GetOfflineModeEnabled());
    EXPECT_THROW(source.GetSupportedColourFormats(), std::logic_error);  // NOLINT(bugprone-use-after-move)
}

TEST(VideoAlgorithm, CopyAssignmentKeepsTheOfflineModeOfTheTarget) {
    for (bool const target : {false, true}) {
        for (bool const source : {false, true}) {
            SCOPED_TRACE(testing::Message() << target << source);
            Algorithm left(MurmurThree32("other"), Type::Inplace, {ColourFormat::Bgr24});
            left.SetOfflineModeEnabled(target);
            Algorithm right = Make();
            right.SetOfflineModeEnabled(source);
            Algorithm& result = left = right;
            EXPECT_EQ(&result, &left);
            EXPECT_EQ(left, right);
            EXPECT_EQ(left.GetTypeNameId(), Id);
            EXPECT_TRUE(left.Is<passthrough::Algorithm>());
            EXPECT_FALSE(left.Is<inplace::Algorithm>());
            EXPECT_EQ(left.GetOfflineModeEnabled(), target);
            EXPECT_EQ(right.GetOfflineModeEnabled(), source);
        }
    }
}

TEST(VideoAlgorithm, CopyAssignmentToItselfChangesNothing) {
    Algorithm algorithm = MakeOffline();
    Algorithm const& same = algorithm;
    algorithm = same;
    EXPECT_EQ(algorithm, Make());
    EXPECT_TRUE(algorithm.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, CopyAssignmentToAMovedFromObjectThrows) {
    Algorithm target = Make();
    Empty(target);
    Algorithm const source = Make();
    EXPECT_EQ(MessageOf<std::logic_error>([&] { target = source; }), "Pimpl is null");
    EXPECT_EQ(target.GetTypeNameId(), MurmurThree32());
}

TEST(VideoAlgorithm, CopyingAMovedFromObjectThrowsAndLeavesTheTargetAlone) {
    Algorithm source = Make();
    Empty(source);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { Algorithm{source}; }), "Pimpl is null");
    Algorithm target = MakeOffline();
    EXPECT_EQ(MessageOf<std::logic_error>([&] { target = source; }), "Pimpl is null");
    EXPECT_EQ(target, Make());
    EXPECT_TRUE(target.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, MoveAssignmentTakesEverything) {
    Algorithm target(MurmurThree32("other"), Type::Inplace, {});
    Algorithm source = MakeOffline();
    Algorithm& result = target = std::move(source);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target, Make());
    EXPECT_TRUE(target.GetOfflineModeEnabled());
    EXPECT_EQ(source.GetTypeNameId(), MurmurThree32());  // NOLINT(bugprone-use-after-move)
}

TEST(VideoAlgorithm, MoveAssignmentRevivesAMovedFromObject) {
    Algorithm target = Make();
    Empty(target);
    target = Make();
    EXPECT_EQ(target, Make());
}

TEST(VideoAlgorithm, MoveAssignmentToItselfChangesNothing) {
    Algorithm algorithm = MakeOffline();
    Algorithm& same = algorithm;
    algorithm = std::move(same);
    EXPECT_EQ(algorithm, Make());
    EXPECT_TRUE(algorithm.GetOfflineModeEnabled());
}

TEST(VideoAlgorithm, SwapExchangesEverything) {
    Algorithm left = MakeOffline();
    Algorithm right(MurmurThree32("other"), Type::Inplace, {ColourFormat::Bgr24});
    video::swap(left, right);
    EXPECT_EQ(left, Algorithm(MurmurThree32("other"), Type::Inplace, {ColourFormat::Bgr24}));
    EXPECT_FALSE(left.GetOfflineModeEnabled());
    EXPECT_EQ(right, Make());
    EXPECT_TRUE(right.GetOfflineModeEnabled());
    swap(left, left);
    EXPECT_TRUE(left.Is<inplace::Algorithm>());
}

TEST(VideoAlgorithm, SwapTakesMovedFromObjects) {
    Algorithm left = Make();
    Algorithm right = Make();
    Empty(right);
    swap(left, right);
    EXPECT_EQ(left.GetTypeNameId(), MurmurThree32());
    EXPECT_EQ(right, Make());
}

TEST(VideoAlgorithm, EqualityComparesIdentifierTypeAndFormatsInTheirOrder) {
    struct Case {
        char const* name;
        Algorithm other;
        bool equal;
    };
    Case const cases[] = {
        {"the same", Make(), true},
        {"another offline mode", MakeOffline(), true},
        {"another identifier",
         {MurmurThree32("b"), Type::Passthrough, {ColourFormat::Grey8, ColourFormat::Nv12}},
         false},
        {"another type", {Id, Type::Inplace, {ColourFormat::Grey8, ColourFormat::Nv12}}, false},
        {"another order of formats", {Id, Type::Passthrough, {ColourFormat::Nv12, ColourFormat::Grey8}}, false},
        {"fewer formats", {Id, Type::Passthrough, {ColourFormat::Grey8}}, false},
        {"more formats", {Id, Type::Passthrough, {ColourFormat::Grey8, ColourFormat::Nv12, ColourFormat::Nv12}}, false},
        {"no formats", {Id, Type::Passthrough, {}}, false},
    };
    Algorithm const algorithm = MakeOffline();
    EXPECT_TRUE(algorithm == algorithm);
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.equal) {
            EXPECT_FALSE(c.other != algorithm);
        }
        EXPECT_EQ(algorithm == c.other, c.equal);
        EXPECT_EQ(c.other == algorithm, c.equal);
    }
}

TEST(VideoAlgorithm, MovedFromObjectAnswersTheCheapQueries) {
    Algorithm algorithm = Make();
    Empty(algorithm);
    Algorithm other = Make();
    Empty(other);
    EXPECT_EQ(algorithm.GetTypeNameId(), MurmurThree32());
    EXPECT_FALSE(algorithm.Is<inplace::Algorithm>());
    EXPECT_FALSE(algorithm.Is<passthrough::Algorithm>());
    EXPECT_EQ(algorithm, other);
    EXPECT_FALSE(algorithm == Make());
    EXPECT_FALSE(Make() == algorithm);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { algorithm.GetSupportedColourFormats(); }), "Pimpl is null");
}

}  // namespace
}  // namespace qel::algorithm::video
