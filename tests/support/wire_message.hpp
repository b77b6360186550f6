#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qel::test {

/// The bytes of a protocol buffer's message, field after field: each a key (number and way of writing) and a value.
class WireMessage {
public:
    WireMessage& Integer(unsigned int field, std::uint64_t value) {
        Varint(field << 3U);
        Varint(value);
        return *this;
    }
    WireMessage& EightBytes(unsigned int field, std::string_view value = "12345678") {
        Varint(field << 3U | 1U);
        bytes_ += value;
        return *this;
    }
    WireMessage& Text(unsigned int field, std::string_view value) {
        Varint(field << 3U | 2U);
        Varint(value.size());
        bytes_ += value;
        return *this;
    }
    WireMessage& Sub(unsigned int field, WireMessage const& value) { return Text(field, value.bytes_); }
    WireMessage& FourBytes(unsigned int field, std::string_view value = "1234") {
        Varint(field << 3U | 5U);
        bytes_ += value;
        return *this;
    }
    std::string const& GetBytes() const { return bytes_; }

private:
    void Varint(std::uint64_t value) {
        for (; value >= 0x80; value >>= 7U) bytes_ += static_cast<char>(value | 0x80U);
        bytes_ += static_cast<char>(value);
    }

    std::string bytes_;
};

}  // namespace qel::test
