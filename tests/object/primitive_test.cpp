#include "qel/object/primitive.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::object {
namespace {

using test::MessageOf;

TEST(ObjectPrimitive, IsNamedAfterItsTypeOfValue) {
    EXPECT_STREQ(Primitive<std::string>().GetTypeName(), "qel.object.String");
    EXPECT_STREQ(Primitive<bool>().GetTypeName(), "qel.object.Bool");
    EXPECT_STREQ(Primitive<unsigned char>().GetTypeName(), "qel.object.UInt8");
    EXPECT_STREQ(Primitive<std::int32_t>().GetTypeName(), "qel.object.Int32");
    EXPECT_STREQ(Primitive<std::int64_t>().GetTypeName(), "qel.object.Int64");
    EXPECT_STREQ(Primitive<std::uint32_t>().GetTypeName(), "qel.object.UInt32");
    EXPECT_STREQ(Primitive<double>().GetTypeName(), "qel.object.Double");
}

TEST(ObjectPrimitive, HoldsAValue) {
    EXPECT_EQ(Primitive<double>().Get(), 0.0);
    Primitive<std::string> text("a");
    text.Set("b");
    EXPECT_EQ(text.Get(), "b");
    EXPECT_TRUE(text == Primitive<std::string>("b"));
    EXPECT_FALSE(text == Primitive<std::string>("c"));
}

TEST(ObjectPrimitive, TakesTheValueOfItsOwnType) {
    Primitive<unsigned char> number;
    number.Set(Primitive<unsigned char>(200));
    EXPECT_EQ(number.Get(), 200);
    Primitive<std::string> text;
    text.Set(Primitive<std::string>("abc"));
    EXPECT_EQ(text.Get(), "abc");
    text.Set(text);
    EXPECT_EQ(text.Get(), "abc");
}

TEST(ObjectPrimitive, ParsesAString) {
    Primitive<unsigned char> number;
    number.Set(Primitive<std::string>("7"));
    EXPECT_EQ(number.Get(), 7);
    Primitive<double> real;
    real.Set(Primitive<std::string>("2.5"));
    EXPECT_EQ(real.Get(), 2.5);
    Primitive<bool> truth;
    truth.Set(Primitive<std::string>("true"));
    EXPECT_TRUE(truth.Get());
}

TEST(ObjectPrimitive, IsUnchangedWhenTheStringCannotBeParsed) {
    Primitive<unsigned char> number(5);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { number.Set(Primitive<std::string>("256")); }),
              "The parsed value '256' was out of range of the integer type: 0 to 255");
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] { number.Set(Primitive<std::string>("abc")); }),
              "Failed to parse the string into an unsigned integer: abc");
    EXPECT_EQ(number.Get(), 5);
}

TEST(ObjectPrimitive, RefusesAnotherType) {
    Primitive<unsigned char> number(5);
    EXPECT_EQ(MessageOf<BadCast>([&] { number.Set(Primitive<std::int32_t>(7)); }),
              "Failed to cast the runtime object from 'qel.object.Int32' to a 'qel.object.UInt8'");
    EXPECT_EQ(number.Get(), 5);
    Primitive<std::string> text("a");
    EXPECT_EQ(MessageOf<BadCast>([&] { text.Set(number); }),
              "Failed to cast the runtime object from 'qel.object.UInt8' to a 'qel.object.String'");
    EXPECT_EQ(text.Get(), "a");
}

TEST(ObjectPrimitive, IsMadeAsASharedConstant) {
    EXPECT_EQ(Make(2.5)->Get(), 2.5);
    EXPECT_EQ(Make("text")->Get(), "text");
}

}  // namespace
}  // namespace qel::object
