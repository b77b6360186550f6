#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <boost/crc.hpp>

namespace qel::serve::mqtt {

/// Appends a number, lowest byte first.
template <std::unsigned_integral Number>
void Put(std::string& bytes, Number number) {
    for (std::size_t i = 0; i < sizeof(Number); ++i) bytes.push_back(static_cast<char>(number >> (8 * i)));
}

/// The number whose bytes begin at offset. Requires them to be there; not checked.
template <std::unsigned_integral Number>
Number Get(std::string_view bytes, std::size_t offset = 0) {
    Number number = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        number |= static_cast<Number>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
    }
    return number;
}

/// Sixteen hexadecimal digits.
inline std::string ToHex(std::uint64_t number) {
    std::string text(16, '0');
    for (auto digit = text.rbegin(); number != 0; ++digit, number >>= 4U) *digit = "0123456789abcdef"[number & 15U];
    return text;
}

/// The CRC-32 of IEEE 802.3.
inline std::uint32_t Checksum(std::string_view bytes) {
    boost::crc_32_type crc;
    crc.process_bytes(bytes.data(), bytes.size());
    return crc.checksum();
}

}  // namespace qel::serve::mqtt
