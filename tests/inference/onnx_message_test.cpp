#include "onnx_message.hpp"

#include <limits>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"
#include "support/wire_message.hpp"

namespace qel::inference {
namespace {

using namespace std::string_literals;
using test::WireMessage;

/// The fields of a message, one a line: number, way and value.
std::string FieldsOf(std::string const& bytes) {
    std::string text;
    OnnxField field;
    for (OnnxMessage reader(bytes); reader.Next(field);) {
        text += std::to_string(field.number) + " way " + std::to_string(static_cast<int>(field.way)) + ": " +
                (field.way == OnnxWay::Integer ? std::to_string(field.integer) : std::string(field.bytes)) + "\n";
    }
    return text;
}

TEST(OnnxMessage, HandsOutItsFieldsInOrderWithTheWayInWhichTheyAreWritten) {
    auto const message = WireMessage().Text(7, "seven").Integer(1, 300).FourBytes(4, "four").EightBytes(10, "eighteen");
    EXPECT_EQ(FieldsOf(message.GetBytes()), "7 way 2: seven\n1 way 0: 300\n4 way 5: four\n10 way 1: eighteen\n");
    EXPECT_EQ(FieldsOf(""), "");
}

TEST(OnnxMessage, TakesTheWholeRangeOfIntegersAndOfFields) {
    constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(FieldsOf(WireMessage().Integer((1U << 29U) - 1, largest).GetBytes()),
              "536870911 way 0: 18446744073709551615\n");
    EXPECT_EQ(FieldsOf("\x08\x80\x00"s), "1 way 0: 0\n") << "with a byte more than it needs";
}

TEST(OnnxMessage, RefusesWhatCannotBeOne) {
    struct Case {
        char const* name;
        std::string bytes;
    } const cases[] = {
        {"key without an end", "\x88"},
        {"key without a value", "\x08"},
        {"integer without an end", "\x08\x80"},
        {"integer of eleven bytes", "\x08\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x01"},
        {"fewer than eight bytes", "\x09seven.."},
        {"fewer than four bytes", "\x0Dxyz"},
        {"text without its length", "\x0A"},
        {"text shorter than its length", "\x0A\x05xxxx"},
        {"text as long as numbers go", "\x0A\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01"},
        {"field 0", "\x02\x01x"},
        {"groups, which are no more", "\x0B\x0C"},
        {"ways that there are not", "\x0E"},
        {"ways that there are not", "\x0F"},
        {"key of more than 32 bits, which is cut down to that of field 1", "\x88\x80\x80\x80\x10\x01"},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(test::MessageOf<std::runtime_error>([&] { FieldsOf(c.bytes); }),
                  "is no ONNX model, or only a part of one")
            << c.name;
    }
}

TEST(OnnxMessage, FindsTheLastTextOrIntegerOfANumberThatIsWrittenAsOne) {
    auto const message = WireMessage().Text(3, "first").Integer(3, 8).Text(3, "last").Integer(3, 9).FourBytes(3);
    EXPECT_EQ(FindText(message.GetBytes(), 3), "last");
    EXPECT_EQ(FindInteger(message.GetBytes(), 3), 9U);
    EXPECT_EQ(FindText(message.GetBytes(), 2), "");
    EXPECT_EQ(FindInteger(message.GetBytes(), 2), 0U);
}

TEST(OnnxMessage, FindsAMessageThatStandsThereOnceAndRefusesASecond) {
    WireMessage message;
    message.Integer(6, 1).Text(5, "five").Integer(5, 1);
    EXPECT_EQ(FindMessage(message.GetBytes(), 5), "five");
    EXPECT_EQ(FindMessage(message.GetBytes(), 6), "");
    message.Text(5, "");
    EXPECT_EQ(test::MessageOf<std::runtime_error>([&] { (void)FindMessage(message.GetBytes(), 5); }),
              "says something twice that an ONNX model says once");
}

}  // namespace
}  // namespace qel::inference
