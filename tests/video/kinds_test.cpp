#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"

namespace qel::algorithm::video {
namespace {

using hash::MurmurThree32;
using media::ColourFormat;
using Formats = std::vector<ColourFormat>;

constexpr MurmurThree32 Id("qel.algorithm.video.Test");

class Inplace : public inplace::Algorithm {
public:
    using Kind = inplace::Algorithm;
    using OtherKind = passthrough::Algorithm;

    explicit Inplace(MurmurThree32 id = Id, Formats const& formats = {ColourFormat::Rgb24, ColourFormat::Grey8})
        : inplace::Algorithm(id, formats) {}

    void Process(media::video::FrameBase<void>& /*frame*/, Result& result) override { result.objects.emplace_back(); }
};

class Passthrough : public passthrough::Algorithm {
public:
    using Kind = passthrough::Algorithm;
    using OtherKind = inplace::Algorithm;

    explicit Passthrough(MurmurThree32 id = Id, Formats const& formats = {ColourFormat::Rgb24, ColourFormat::Grey8})
        : passthrough::Algorithm(id, formats) {}

    void Process(media::video::FrameBase<void const> const& /*frame*/, Result& result) override {
        result.objects.emplace_back();
    }
};

template <class T>
class VideoAlgorithmKind : public testing::Test {};

using Kinds = testing::Types<Inplace, Passthrough>;
TYPED_TEST_SUITE(VideoAlgorithmKind, Kinds);

TYPED_TEST(VideoAlgorithmKind, IsAbstractAndDestroyedThroughItsBase) {
    EXPECT_TRUE(std::is_abstract_v<typename TypeParam::Kind>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Algorithm>);
    std::unique_ptr<Algorithm> const base = std::make_unique<TypeParam>();
    EXPECT_NE(dynamic_cast<typename TypeParam::Kind*>(base.get()), nullptr);
}

TYPED_TEST(VideoAlgorithmKind, IsOfItsOwnKindOnly) {
    TypeParam const algorithm;
    EXPECT_TRUE(algorithm.template Is<typename TypeParam::Kind>());
    EXPECT_FALSE(algorithm.template Is<typename TypeParam::OtherKind>());
    EXPECT_EQ(algorithm.GetTypeNameId(), Id);
    EXPECT_EQ(algorithm.GetSupportedColourFormats(), (Formats{ColourFormat::Rgb24, ColourFormat::Grey8}));
    EXPECT_FALSE(algorithm.GetOfflineModeEnabled());
}

TYPED_TEST(VideoAlgorithmKind, CopyStartsOnline) {
    TypeParam source;
    source.SetOfflineModeEnabled(true);
    TypeParam const copy(source);
    EXPECT_EQ(copy, source);
    EXPECT_FALSE(copy.GetOfflineModeEnabled());
}

TYPED_TEST(VideoAlgorithmKind, MovingCopiesAndLeavesTheSourceUsable) {
    TypeParam source;
    source.SetOfflineModeEnabled(true);
    TypeParam const moved(std::move(source));
    EXPECT_FALSE(moved.GetOfflineModeEnabled());
    EXPECT_EQ(moved, TypeParam());
    EXPECT_TRUE(source.GetOfflineModeEnabled());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source, TypeParam());
    EXPECT_EQ(source.GetSupportedColourFormats().size(), 2U);
    EXPECT_NE(moved.GetSupportedColourFormats().data(), source.GetSupportedColourFormats().data());
}

TYPED_TEST(VideoAlgorithmKind, CopyAssignmentKeepsTheOfflineModeOfTheTarget) {
    TypeParam target(MurmurThree32("other"), {});
    target.SetOfflineModeEnabled(true);
    TypeParam const source;
    target = source;
    EXPECT_EQ(target, source);
    EXPECT_TRUE(target.GetOfflineModeEnabled());
}

TYPED_TEST(VideoAlgorithmKind, MoveAssignmentMoves) {
    TypeParam target(MurmurThree32("other"), {});
    TypeParam source;
    source.SetOfflineModeEnabled(true);
    target = std::move(source);
    EXPECT_EQ(target, TypeParam());
    EXPECT_TRUE(target.GetOfflineModeEnabled());
    EXPECT_EQ(source.GetTypeNameId(), MurmurThree32());  // NOLINT(bugprone-use-after-move)
    EXPECT_FALSE(source.template Is<typename TypeParam::Kind>());
    EXPECT_THROW(source = target, std::logic_error);
    EXPECT_THROW(TypeParam{std::move(source)}, std::logic_error);
}

TYPED_TEST(VideoAlgorithmKind, SwapsAsItsBase) {
    TypeParam left;
    TypeParam right(MurmurThree32("other"), {});
    left.SetOfflineModeEnabled(true);
    typename TypeParam::Kind& kind = left;
    typename TypeParam::Kind& otherKind = right;
    swap(kind, otherKind);
    EXPECT_EQ(right, TypeParam());
    EXPECT_TRUE(right.GetOfflineModeEnabled());
    EXPECT_FALSE(left.GetOfflineModeEnabled());
}

TYPED_TEST(VideoAlgorithmKind, ComparesAsItsBase) {
    EXPECT_TRUE(TypeParam() == Algorithm(TypeParam()));
    EXPECT_FALSE(TypeParam() == TypeParam(Id, {ColourFormat::Grey8, ColourFormat::Rgb24}));
    EXPECT_TRUE(TypeParam() != TypeParam(MurmurThree32("other")));
}

TYPED_TEST(VideoAlgorithmKind, AddsToTheResultOfTheFrame) {
    TypeParam algorithm;
    typename TypeParam::Kind& kind = algorithm;
    media::video::FrameBase<void> frame;
    media::video::FrameBase<void const> readOnlyFrame;
    Result result;
    if constexpr (std::is_same_v<TypeParam, Inplace>) {
        kind.Process(frame, result);
    } else {
        kind.Process(readOnlyFrame, result);
    }
    EXPECT_EQ(result.objects.size(), 1U);
}

TEST(VideoAlgorithmKind, OfTheOtherSortIsNotEqual) { EXPECT_FALSE(Inplace() == Passthrough()); }

}  // namespace
}  // namespace qel::algorithm::video
