#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "check.hpp"
#include "qel/algorithm/bit_mask.hpp"

namespace qel::fuzz {

/// Takes values from the bytes of a fuzzer; zeros follow when they are used up.
class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : data_(data), left_(size) {}

    std::uint8_t Byte() {
        if (left_ == 0) return 0;
        --left_;
        return *data_++;
    }

    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i) word = word << 8 | Byte();
        return word;
    }

    /// A number from first to last, both inclusive.
    unsigned int Number(unsigned int first, unsigned int last) {
        unsigned int const value = static_cast<unsigned int>(Byte()) << 8 | Byte();
        return first + value % (last - first + 1);
    }

    /// A corner near an extent, or, now and then, any number at all.
    int Corner(unsigned int extent) {
        if (Byte() % 8 == 0) return static_cast<int>(Word());
        return static_cast<int>(Number(0, extent + 10)) - 5;
    }

    algorithm::BitMask::Size Size(unsigned int maxWidth, unsigned int maxHeight) {
        unsigned int const width = Number(0, maxWidth);
        return {width, Number(0, maxHeight)};
    }

    /// A mask of the size, padding filled as well: plain bytes, or runs of bytes where the first byte is odd.
    algorithm::BitMask Mask(algorithm::BitMask::Size size) {
        algorithm::BitMask mask(size);
        bool const runs = Byte() % 2 != 0;
        std::uint32_t value = 0;
        unsigned int bits = 0;
        for (std::uint32_t& word : mask.GetData()) {
            if (!runs) {
                word = Word();
                continue;
            }
            for (int bit = 0; bit < 32; ++bit, --bits) {
                while (bits == 0) {
                    if (left_ == 0) return mask;
                    bits = Byte();
                    value ^= 1U;
                }
                word = word << 1 | value;
            }
        }
        return mask;
    }

private:
    std::uint8_t const* data_;
    std::size_t left_;
};

}  // namespace qel::fuzz
