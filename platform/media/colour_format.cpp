#include "qel/media/colour_format.hpp"

#include <ostream>

qel::type::StringMap const& qel::type::Strings<qel::media::ColourFormat>::GetMap() {
    static StringMap const map = {{0, "Grey8"}, {1, "Rgb24"}, {2, "Bgr24"}, {3, "Yuv24"}, {4, "Nv12"}};
    return map;
}

namespace qel::media {

std::ostream& operator<<(std::ostream& stream, ColourFormat format) {
    auto const& names = type::Strings<ColourFormat>::GetMap();
    auto const found = names.find(static_cast<std::uint64_t>(format));
    if (found == names.end()) return stream << static_cast<std::int32_t>(format);
    return stream << '"' << found->second << '"';
}

}  // namespace qel::media
