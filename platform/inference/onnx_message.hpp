#pragma once

#include <cstdint>
#include <string_view>

// An ONNX file is a protocol buffer. A message is a row of fields, each a key and a value; the key is the number of the
// field and how its value is written. Numbers of fields are those of onnx.proto. A back end passes over a field whose
// value is written in another way than it expects: whoever looks for one must ask for the way, too.

namespace qel::inference {

/// How the value of a field is written.
enum class OnnxWay : std::uint8_t {
    Integer = 0,     ///< a number of seven bits a byte
    EightBytes = 1,  ///< of a floating point number
    Bytes = 2,       ///< a length and as many bytes: a text, another message, or a row of numbers
    FourBytes = 5,   ///< of a floating point number
};

/// One field of a message.
struct OnnxField {
    std::uint64_t number = 0;
    OnnxWay way = OnnxWay::Integer;
    std::uint64_t integer = 0;  ///< of an integer
    std::string_view bytes{};   ///< of all others

    bool IsInteger(std::uint64_t wanted) const { return way == OnnxWay::Integer && number == wanted; }
    bool IsBytes(std::uint64_t wanted) const { return way == OnnxWay::Bytes && number == wanted; }
};

/// Hands out the fields of a message one by one; throws std::runtime_error where the bytes cannot be one.
class OnnxMessage {
public:
    explicit OnnxMessage(std::string_view bytes) : rest_(bytes) {}

    bool Next(OnnxField& field);

private:
    std::uint64_t ReadInteger();
    std::string_view Take(std::uint64_t size);

    std::string_view rest_;
};

/// The text, or the integer, of the last field of that number; empty or 0 where there is none.
std::string_view FindText(std::string_view message, std::uint64_t number);
std::uint64_t FindInteger(std::string_view message, std::uint64_t number);
/// The message in the only field of that number; empty where there is none. Throws std::runtime_error where there are
/// more: back ends join them to one.
std::string_view FindMessage(std::string_view message, std::uint64_t number);

}  // namespace qel::inference
