#include "qel/media/video/frame/plane.hpp"

#include <sstream>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace qel::media::video::frame {
namespace {

template <class T>
class Plane : public testing::Test {
protected:
    char pixels[16] = {};
};

using Pixels = testing::Types<void, void const>;
TYPED_TEST_SUITE(Plane, Pixels);

TYPED_TEST(Plane, IsAllZeroByDefault) {
    PlaneBase<TypeParam> const plane;
    EXPECT_EQ(plane.GetSize(), 0U);
    EXPECT_EQ(plane.GetBuffer(), nullptr);
    EXPECT_EQ(plane.GetStride(), 0);
    EXPECT_FALSE(plane);
}

TYPED_TEST(Plane, HoldsWhatItWasGiven) {
    PlaneBase<TypeParam> const plane(~0UL, this->pixels, -8);
    EXPECT_EQ(plane.GetSize(), ~0UL);
    EXPECT_EQ(plane.GetBuffer(), this->pixels);
    EXPECT_EQ(plane.GetStride(), -8);
    EXPECT_TRUE((std::is_same_v<decltype(plane.GetBuffer()), TypeParam*>));
    EXPECT_TRUE((std::is_same_v<decltype(plane.GetSize()), unsigned long>));
    EXPECT_TRUE((std::is_same_v<decltype(plane.GetStride()), long>));
}

TYPED_TEST(Plane, IsTrueWithASizeAndABufferWhateverTheStride) {
    EXPECT_TRUE((PlaneBase<TypeParam>(1, this->pixels, 0)));
    EXPECT_TRUE((PlaneBase<TypeParam>(1, this->pixels, -1)));
    EXPECT_FALSE((PlaneBase<TypeParam>(0, this->pixels, 8)));
    EXPECT_FALSE((PlaneBase<TypeParam>(8, nullptr, 8)));
}

TYPED_TEST(Plane, ComparesAllThreeFields) {
    PlaneBase<TypeParam> const plane(8, this->pixels, 4);
    EXPECT_TRUE(plane == (PlaneBase<TypeParam>(8, this->pixels, 4)));
    EXPECT_FALSE(plane != (PlaneBase<TypeParam>(8, this->pixels, 4)));
    EXPECT_TRUE(plane != (PlaneBase<TypeParam>(9, this->pixels, 4)));
    EXPECT_TRUE(plane != (PlaneBase<TypeParam>(8, this->pixels + 1, 4)));
    EXPECT_TRUE(plane != (PlaneBase<TypeParam>(8, this->pixels, -4)));
}

TYPED_TEST(Plane, CopiesAssignsAndSwapsItsFields) {
    PlaneBase<TypeParam> const first(8, this->pixels, 4), second(6, this->pixels + 2, 3);
    PlaneBase<TypeParam> left(first), right;
    EXPECT_EQ(left, first);
    right = second;
    EXPECT_EQ(right, second);
    swap(left, right);
    EXPECT_EQ(left, second);
    EXPECT_EQ(right, first);
    frame::swap(left, right);
    EXPECT_EQ(left, first);
    swap(left, left);
    EXPECT_EQ(left, first);
    PlaneBase<TypeParam>& same = left;
    left = same;
    EXPECT_EQ(left, first);
    left = std::move(same);
    EXPECT_EQ(left, first);
}

TYPED_TEST(Plane, WritesItsFieldsWithTheQuoteBeforeTheBufferLeftOpen) {
    std::ostringstream text;
    text << PlaneBase<TypeParam>(~0UL, reinterpret_cast<TypeParam*>(0x1f0), -4);
    EXPECT_EQ(text.str(), "{\"size\":18446744073709551615,\"buffer\":\"0x1f0,\"stride\":-4}");
    text.str("");
    text << PlaneBase<TypeParam>();
    EXPECT_EQ(text.str(), "{\"size\":0,\"buffer\":\"0,\"stride\":0}");
}

}  // namespace
}  // namespace qel::media::video::frame
