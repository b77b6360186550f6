#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

#include "qel/hash/export.hpp"

namespace qel::hash {

/// The 32-bit MurmurHash3 (variant x86_32) of a text, used as the identifier of a dotted type name.
///
/// The hash is over the characters, without a closing NUL, from seed 0 unless another is given; it is the same on
/// every machine; any thread. Computable at compile time. Algorithm: Austin Appleby, MurmurHash3, public domain.
class MurmurThree32 {
public:
    /// The identifier 0, which is also the hash of the empty text.
    constexpr MurmurThree32() noexcept = default;
    /// An identifier whose hash value is known already.
    constexpr explicit MurmurThree32(std::uint32_t value) noexcept : value_(value) {}
    /// The identifier of a text.
    constexpr explicit MurmurThree32(std::string_view text, std::uint32_t seed = 0) noexcept
        : value_(Hash(text, seed)) {}
    constexpr explicit MurmurThree32(char const* text) noexcept : MurmurThree32(std::string_view(text)) {}

    constexpr std::uint32_t GetValue() const noexcept { return value_; }

    friend constexpr auto operator<=>(MurmurThree32 const&, MurmurThree32 const&) noexcept = default;

private:
    static constexpr std::uint32_t RotateLeft(std::uint32_t word, int by) noexcept {
        return (word << by) | (word >> (32 - by));
    }

    static constexpr std::uint32_t Byte(std::string_view text, std::size_t index) noexcept {
        return static_cast<unsigned char>(text[index]);
    }

    static constexpr std::uint32_t Scramble(std::uint32_t block) noexcept {
        return RotateLeft(block * 0xcc9e2d51U, 15) * 0x1b873593U;
    }

    static constexpr std::uint32_t Hash(std::string_view text, std::uint32_t seed) noexcept {
        std::uint32_t hash = seed;
        std::size_t const blocks = text.size() / 4;
        for (std::size_t i = 0; i < blocks; ++i) {
            // Bytes are put together by hand, so that the result does not depend on the machine's byte order.
            std::uint32_t const block = Byte(text, 4 * i) | Byte(text, 4 * i + 1) << 8 | Byte(text, 4 * i + 2) << 16 |
                                        Byte(text, 4 * i + 3) << 24;
            hash = RotateLeft(hash ^ Scramble(block), 13) * 5 + 0xe6546b64U;
        }
        std::uint32_t tail = 0;
        for (std::size_t i = text.size(); i > 4 * blocks; --i) tail = tail << 8 | Byte(text, i - 1);
        hash ^= Scramble(tail);
        hash ^= static_cast<std::uint32_t>(text.size());
        hash = (hash ^ hash >> 16) * 0x85ebca6bU;
        hash = (hash ^ hash >> 13) * 0xc2b2ae35U;
        return hash ^ hash >> 16;
    }

    std::uint32_t value_ = 0;
};

/// Writes the identifier as eight lower-case hexadecimal digits, whatever the stream's flags.
QEL_HASH_EXPORT std::ostream& operator<<(std::ostream& stream, MurmurThree32 hash);

}  // namespace qel::hash

template <>
struct std::hash<qel::hash::MurmurThree32> {
    std::size_t operator()(qel::hash::MurmurThree32 const& id) const noexcept { return id.GetValue(); }
};
