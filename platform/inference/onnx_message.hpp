#pragma once

#include <cstdint>
#include <string_view>

// An ONNX file is a protocol buffer. A message is a row of fields, each a key and a value; the key is the number of the
// field and how its value is written: 0 a number of seven bits a byte, 1 eight bytes, 2 a length and as many bytes (a
// text, another message, or a row of numbers), 5 four bytes. Numbers of fields are those of onnx.proto.

namespace qel::inference {

/// One field of a message.
struct OnnxField {
    std::uint64_t number = 0;
    std::uint64_t integer = 0;  ///< of a number of seven bits a byte
    std::string_view bytes{};   ///< of a text, message or row
    bool isBytes = false;
};

/// Hands out the fields of a message one by one; throws std::runtime_error where the bytes cannot be one.
class OnnxMessage {
public:
    explicit OnnxMessage(std::string_view bytes) : rest_(bytes) {}

    bool Next(OnnxField& field);

private:
    std::uint64_t Varint();
    std::string_view Take(std::uint64_t size);

    std::string_view rest_;
};

/// The bytes, or the number, of the last field of that number; empty or 0 where there is none.
std::string_view FindBytes(std::string_view message, std::uint64_t number);
std::uint64_t FindInteger(std::string_view message, std::uint64_t number);

}  // namespace qel::inference
