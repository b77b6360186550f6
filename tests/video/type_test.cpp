#include "qel/algorithm/video/type.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "qel/type/to_string.hpp"

namespace qel::algorithm::video {
namespace {

TEST(VideoType, IsNumberedFromZero) {
    EXPECT_EQ(static_cast<int>(Type::Inplace), 0);
    EXPECT_EQ(static_cast<int>(Type::Passthrough), 1);
    EXPECT_EQ(static_cast<int>(Type::Transform), 2);
}

TEST(VideoType, KnowsItsValuesByTheNamesOfTheirTextsToo) {
    EXPECT_EQ(Type::inplace, Type::Inplace);
    EXPECT_EQ(Type::passthrough, Type::Passthrough);
    EXPECT_EQ(Type::transform, Type::Transform);
}

TEST(VideoType, HasItsDottedTypeName) { EXPECT_STREQ(type::Name<Type>::Value, "qel.algorithm.video.Type"); }

TEST(VideoType, HasATextForEachOfItsThreeValues) {
    type::StringMap const expected = {{0, "inplace"}, {1, "passthrough"}, {2, "transform"}};
    EXPECT_EQ(type::Strings<Type>::GetMap(), expected);
    EXPECT_EQ(type::ToString(Type::Inplace), "inplace");
    EXPECT_EQ(type::ToString(Type::Passthrough), "passthrough");
    EXPECT_EQ(type::ToString(Type::Transform), "transform");
    EXPECT_THROW(type::ToString(static_cast<Type>(3)), std::invalid_argument);
}

TEST(VideoType, BuildsItsTableOnce) { EXPECT_EQ(&type::Strings<Type>::GetMap(), &type::Strings<Type>::GetMap()); }

}  // namespace
}  // namespace qel::algorithm::video
