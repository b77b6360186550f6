#include "qel/hash/murmur_three_32.hpp"

#include <array>
#include <ostream>

namespace qel::hash {

std::ostream& operator<<(std::ostream& stream, MurmurThree32 hash) {
    std::array<char, 8> digits{};
    std::uint32_t value = hash.GetValue();
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, value >>= 4) {
        *digit = "0123456789abcdef"[value & 15U];
    }
    return stream << std::string_view(digits.data(), digits.size());
}

}  // namespace qel::hash
