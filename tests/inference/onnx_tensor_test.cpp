#include "onnx_tensor.hpp"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/message_of.hpp"
#include "support/wire_message.hpp"

namespace qel::inference {
namespace {

using test::WireMessage;

// Fields of a tensor, and types of its values.
enum : unsigned int { Size = 1, Type = 2, Floats = 4, Integers = 5, Texts = 6, LongIntegers = 7, Raw = 9 };
enum : unsigned int { Doubles = 10, UnsignedIntegers = 11, Location = 14 };
enum : unsigned int { Float = 1, Int64 = 7, Text = 8, Double = 11, UInt64 = 13 };

constexpr char Number[] = "has a tensor with another number of values than its sizes say";
constexpr char Place[] = "has a tensor whose values do not stand where its type has them";

/// Why a tensor is refused; empty when it is taken.
std::string Refusal(WireMessage const& tensor) {
    try {
        CheckOnnxTensor(tensor.GetBytes());
        return "";
    } catch (std::runtime_error const& error) {
        return error.what();
    }
}

WireMessage Tensor(std::vector<std::uint64_t> const& sizes, unsigned int type) {
    WireMessage tensor;
    for (std::uint64_t const size : sizes) tensor.Integer(Size, size);
    return tensor.Integer(Type, type);
}

TEST(OnnxTensor, HasRawValuesOfTheSizeOfItsType) {
    constexpr std::size_t bytes[] = {0, 4, 1, 1, 2, 2, 4, 8, 0, 1, 2, 8, 4, 8, 0, 0, 0};
    for (unsigned int type = 0; type < std::size(bytes); ++type) {
        SCOPED_TRACE(type);
        auto const refusal = [&](std::size_t size) {
            return Refusal(Tensor({2, 3}, type).Text(Raw, std::string(size, 'x')));
        };
        if (bytes[type] == 0) {
            EXPECT_EQ(refusal(6), Place);
            continue;
        }
        EXPECT_EQ(refusal(6 * bytes[type]), "");
        EXPECT_EQ(refusal(7 * bytes[type]), Number);
        EXPECT_EQ(refusal(5 * bytes[type]), Number);
        EXPECT_EQ(refusal(6 * bytes[type] - 1), Number);
        EXPECT_EQ(refusal(6 * bytes[type] + 1), Number);
    }
}

TEST(OnnxTensor, HasTheValuesOfAListOneByOneOrInRows) {
    EXPECT_EQ(Refusal(Tensor({3}, Float).FourBytes(Floats).Text(Floats, "12345678")), "");
    EXPECT_EQ(Refusal(Tensor({3}, Double).EightBytes(Doubles).Text(Doubles, "1234567812345678")), "");
    EXPECT_EQ(Refusal(Tensor({4}, Int64).Integer(LongIntegers, 300).Text(LongIntegers, "\x01\x80\x01\x02")), "");
    EXPECT_EQ(Refusal(Tensor({4}, UInt64).Integer(UnsignedIntegers, 300).Text(UnsignedIntegers, "\x01\x80\x01\x02")),
              "");
    EXPECT_EQ(Refusal(Tensor({2}, Text).Text(Texts, "one").Text(Texts, "")), "");
    for (unsigned int const type : {2U, 3U, 4U, 5U, 6U, 9U, 10U}) {
        EXPECT_EQ(Refusal(Tensor({4}, type).Integer(Integers, 300).Text(Integers, "\x01\x80\x01\x02")), "") << type;
    }
    EXPECT_EQ(Refusal(Tensor({2}, Float).FourBytes(Floats)), Number);
    EXPECT_EQ(Refusal(Tensor({2}, Float).FourBytes(Floats).Text(Floats, "12345678")), Number);
}

TEST(OnnxTensor, IsRefusedWithItsValuesInAListOfAnotherType) {
    // Where its own list is empty, back ends take as many values from what is raw: there is nothing.
    EXPECT_EQ(Refusal(Tensor({3}, Float).Text(Integers, "123")), Place);
    EXPECT_EQ(Refusal(Tensor({3}, Float).Text(LongIntegers, "123")), Place);
    EXPECT_EQ(Refusal(Tensor({1}, Int64).Text(Integers, "1")), Place);
    EXPECT_EQ(Refusal(Tensor({1}, Double).FourBytes(Floats)), Place);
    EXPECT_EQ(Refusal(Tensor({1}, 0).FourBytes(Floats)), Place) << "without a type";
    EXPECT_EQ(Refusal(Tensor({1}, 99).FourBytes(Floats)), Place) << "of a type that there is not";
}

TEST(OnnxTensor, IsRefusedWithValuesInTwoPlaces) {
    // Back ends take the list first, whatever is raw.
    EXPECT_EQ(Refusal(Tensor({2}, Float).FourBytes(Floats).Text(Raw, "12345678")), Place);
    EXPECT_EQ(Refusal(Tensor({2}, Float).FourBytes(Floats).Integer(Integers, 1)), Place);
    EXPECT_EQ(Refusal(Tensor({1}, Float).FourBytes(Floats).Text(Raw, "").Text(Integers, "")), "")
        << "empty ones are none";
}

TEST(OnnxTensor, CountsNothingThatIsWrittenInAWayThatBackEndsPassOver) {
    EXPECT_EQ(Refusal(Tensor({2}, Float).FourBytes(Floats).Integer(Floats, 1)), Number);
    EXPECT_EQ(Refusal(Tensor({2}, Float).FourBytes(Floats).EightBytes(Floats)), Number);
    EXPECT_EQ(Refusal(Tensor({2}, Double).EightBytes(Doubles).FourBytes(Doubles)), Number);
    EXPECT_EQ(Refusal(Tensor({2}, Int64).Integer(LongIntegers, 1).FourBytes(LongIntegers)), Number);
    EXPECT_EQ(Refusal(Tensor({2}, Text).Text(Texts, "one").Integer(Texts, 1)), Number);
    EXPECT_EQ(Refusal(Tensor({2}, Float).Text(Raw, "1234").Integer(Raw, 1)), Number) << "raw values stay";
    EXPECT_EQ(Refusal(Tensor({1}, Float).Text(Raw, "1234").FourBytes(Size)), "") << "no size of nought";
    EXPECT_EQ(Refusal(Tensor({1}, Float).Text(Raw, "1234").Text(Type, "8")), "") << "the type stays";
}

TEST(OnnxTensor, HasAsManyValuesAsTheProductOfItsSizes) {
    EXPECT_EQ(Refusal(Tensor({}, Float).FourBytes(Floats)), "") << "a single value has no sizes";
    EXPECT_EQ(Refusal(Tensor({}, Float)), Number);
    EXPECT_EQ(Refusal(Tensor({3, 0, 5}, Float)), "");
    EXPECT_EQ(Refusal(Tensor({0}, Float).FourBytes(Floats)), Number);
    EXPECT_EQ(Refusal(Tensor({300}, 2).Text(Raw, std::string(300, 'x'))), "");
    EXPECT_EQ(Refusal(WireMessage().Text(Size, "\x02\xAC\x02").Integer(Type, 2).Text(Raw, std::string(600, 'x'))), "")
        << "2 and 300 in a row";
    EXPECT_EQ(Refusal(WireMessage().Text(Size, "\x02\x80").Integer(Type, 2).Text(Raw, "xx")), Number)
        << "a row that ends within a size";
}

TEST(OnnxTensor, IsRefusedWithSizesWhoseProductIsNotCountable) {
    constexpr auto half = std::uint64_t{1} << 32U;
    EXPECT_EQ(Refusal(Tensor({half, half}, 2).Text(Raw, "x")), Number) << "their product is cut down to nought";
    EXPECT_EQ(Refusal(Tensor({half, half}, 2)), Number);
    EXPECT_EQ(Refusal(Tensor({~std::uint64_t{0}}, 2).Text(Raw, "x")), Number) << "-1";
    std::string const row = "\x80\x80\x80\x80\x80\x80\x80\x80\x80\x01";  // 2^63
    EXPECT_EQ(Refusal(WireMessage().Text(Size, row).Integer(Type, 2)), Number);
}

TEST(OnnxTensor, IsRefusedWithValuesInOtherFiles) {
    EXPECT_EQ(Refusal(Tensor({1}, Float).FourBytes(Floats).Integer(Location, 1)), "keeps its weights in other files");
    EXPECT_EQ(Refusal(Tensor({1}, Float).FourBytes(Floats).Integer(Location, 0)), "");
}

}  // namespace
}  // namespace qel::inference
