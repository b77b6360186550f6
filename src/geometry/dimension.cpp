#include "qel/geometry/dimension.hpp"

#include <ostream>

namespace qel::geometry {

std::ostream& operator<<(std::ostream& stream, Dimension<unsigned int, 2> const& dimension) {
    return stream << "{\"width\":" << dimension.width << ",\"height\":" << dimension.height << '}';
}

}  // namespace qel::geometry
