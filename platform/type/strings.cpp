#include "qel/type/strings.hpp"

#include <stdexcept>

namespace qel::type::detail {

std::string const& FindString(StringMap const& strings, std::uint64_t value) {
    auto const found = strings.find(value);
    if (found == strings.end()) {
        throw std::invalid_argument(
            "Cannot convert the enum into its string representation as the value is out of range of the string "
            "representation map");
    }
    return found->second;
}

}  // namespace qel::type::detail
