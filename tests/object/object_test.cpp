#include "qel/object/object.hpp"

#include <type_traits>

#include <gtest/gtest.h>

#include "qel/object/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::object {
namespace {

using test::MessageOf;

static_assert(std::is_base_of_v<std::bad_cast, BadCast>);
static_assert(std::is_nothrow_copy_constructible_v<BadCast> && std::is_nothrow_copy_assignable_v<BadCast>);

TEST(BadCast, NamesBothTypes) {
    EXPECT_STREQ(BadCast("qel.a.Source", "qel.b.Target").what(),
                 "Failed to cast the runtime object from 'qel.a.Source' to a 'qel.b.Target'");
}

TEST(BadCast, CopiesItsText) {
    BadCast copy("x", "y");
    {
        BadCast const original("qel.a.Source", "qel.b.Target");
        copy = original;
    }
    EXPECT_STREQ(BadCast(copy).what(), "Failed to cast the runtime object from 'qel.a.Source' to a 'qel.b.Target'");
}

TEST(Object, IsIdentifiedByTheHashOfItsTypeName) {
    Primitive<std::string> const text;
    EXPECT_STREQ(text.GetTypeName(), "qel.object.String");
    EXPECT_EQ(text.GetTypeId(), hash::MurmurThree32("qel.object.String"));
}

TEST(Object, CastsToItsOwnTypeAndItsBase) {
    Primitive<std::string> const text("a");
    Object const& object = text;
    EXPECT_TRUE(object.Is<Primitive<std::string>>());
    EXPECT_TRUE(object.Is<Object>());
    EXPECT_FALSE(object.Is<Primitive<bool>>());
    EXPECT_EQ(&object.As<Primitive<std::string>>(), &text);
    EXPECT_EQ(&object.As<Object>(), &text);
}

TEST(Object, RefusesACastToAnotherType) {
    Primitive<std::string> const text("a");
    EXPECT_EQ(MessageOf<BadCast>([&] { text.As<Primitive<unsigned char>>(); }),
              "Failed to cast the runtime object from 'qel.object.String' to a 'qel.object.UInt8'");
}

}  // namespace
}  // namespace qel::object
