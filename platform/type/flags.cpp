#include "qel/type/flags.hpp"

#include <stdexcept>
#include <string>

namespace qel::type::detail {

void ThrowFlagOutOfRange(char const* operation, std::size_t position, std::size_t limit) {
    throw std::out_of_range(std::string(operation) + ": __position (which is " + std::to_string(position) +
                            ") >= _Nb (which is " + std::to_string(limit) + ")");
}

}  // namespace qel::type::detail
