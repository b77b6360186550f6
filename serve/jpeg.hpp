#pragma once

#include <cstdint>
#include <vector>

#include "picture.hpp"

namespace qel::serve {

/// The picture as the bytes of a JPEG file, colour at half the resolution. quality: 1 to 100.
/// Throws host::Error for a picture without pixels, or larger than the format allows (65,500 pixels a side).
std::vector<std::uint8_t> EncodeJpeg(host::Picture const& picture, int quality);

}  // namespace qel::serve
