#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <type_traits>

#include "qel/type/export.hpp"

namespace qel::type {

namespace detail {

/// Throws std::out_of_range in the words of std::bitset: "bitset::set: __position (which is P) >= _Nb (which is N)".
[[noreturn]] QEL_TYPE_EXPORT void ThrowFlagOutOfRange(char const* operation, std::size_t position, std::size_t limit);

}  // namespace detail

/// A set of enumerators, one bit each: the enumerator of value p is bit p of the word.
///
/// Storage: the unsigned type of the word; Limit: the number of positions that the set declares. A position that is
/// not below both Limit and the word's number of bits is refused with std::out_of_range by Set, Reset and the
/// constructors, and reads as clear by Test. One thread at a time.
template <class E, class Storage = std::uint64_t, std::size_t Limit = 64>
class Flags {
    static_assert(std::is_unsigned_v<Storage>);

public:
    constexpr Flags() noexcept = default;
    /// The set whose word is given: value 10 holds positions 1 and 3.
    constexpr explicit Flags(Storage value) noexcept : value_(value) {}
    constexpr Flags(std::initializer_list<E> flags) {
        for (E const flag : flags) Set(flag);
    }

    constexpr Flags& Set(E flag) {
        value_ = static_cast<Storage>(value_ | Bit(flag, "bitset::set"));
        return *this;
    }
    constexpr Flags& Reset(E flag) {
        value_ = static_cast<Storage>(value_ & ~Bit(flag, "bitset::reset"));
        return *this;
    }
    constexpr bool Test(E flag) const noexcept {
        return Position(flag) < Positions && (value_ >> Position(flag) & 1U) != 0;
    }
    constexpr bool IsEmpty() const noexcept { return value_ == 0; }
    constexpr Storage GetValue() const noexcept { return value_; }

    friend constexpr bool operator==(Flags const&, Flags const&) noexcept = default;

private:
    static constexpr std::size_t Digits = std::numeric_limits<Storage>::digits;
    static constexpr std::size_t Positions = Limit < Digits ? Limit : Digits;

    // A negative enumerator becomes a huge position and is refused like any other that does not fit.
    static constexpr std::size_t Position(E flag) noexcept { return static_cast<std::size_t>(flag); }

    static constexpr Storage Bit(E flag, char const* operation) {
        if (Position(flag) >= Positions) detail::ThrowFlagOutOfRange(operation, Position(flag), Positions);
        return static_cast<Storage>(Storage{1} << Position(flag));
    }

    Storage value_ = 0;
};

}  // namespace qel::type
