#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qel::algorithm::concom {

/// Entries that ScanEdges may write behind the last edge.
constexpr std::size_t EdgeSlack = 2;

/// Writes the columns at which the row's runs of set pixels begin and end (the end exclusive), in turn, and returns
/// where it stopped. width is the row's number of pixels; padding is not looked at.
/// edges has room for width + EdgeSlack entries.
inline std::uint32_t* ScanEdges(std::uint32_t const* words, unsigned int width, std::uint32_t* edges) {
    std::uint32_t carry = 0;
    auto const scan = [&](std::uint32_t word, unsigned int column) {
        std::uint32_t changes = word ^ (word >> 1 | carry << 31);
        carry = word & 1U;
        for (; changes != 0; changes &= ~(0x80000000U >> std::countl_zero(changes))) {
            *edges++ = column + static_cast<unsigned int>(std::countl_zero(changes));
        }
    };
    unsigned int const whole = width / 32U;
    for (unsigned int i = 0; i < whole; ++i) {
        if ((words[i] | carry) != 0) scan(words[i], 32U * i);
    }
    if (width % 32U != 0) scan(words[whole] & ~(~0U >> width % 32U), 32U * whole);
    if (carry != 0) *edges++ = width;
    return edges;
}

}  // namespace qel::algorithm::concom
