#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/rectangle.hpp"

namespace qel::algorithm::video {

/// A value that an algorithm knows of an object beyond the fixed fields, such as a length in metres ("height_m").
using Attribute = std::variant<bool, std::int64_t, double, std::string, std::vector<std::string>, std::vector<double>>;

/// One thing found in a frame.
struct Object {
    /// Bounding box in pixels: columns x0 to x1 - 1 and rows y0 to y1 - 1.
    geometry::Rectangle<unsigned int> box;
    /// Number of pixels that belong to the object.
    std::uint32_t area = 0;
    /// What it is, in the words of the algorithm that said it last.
    std::string label;
    /// How sure that algorithm is: 0 (not at all) to 1.
    float confidence = 0;
    /// What further algorithms add; a host writes them as further members of the object, in the order of their names.
    std::map<std::string, Attribute, std::less<>> attributes{};
};

/// What the algorithms of one run have found in one frame so far.
///
/// The record is passed from algorithm to algorithm: each adds objects or enriches those that are there.
struct Result {
    std::vector<Object> objects;
    /// The pixels that the objects were found in, of the frame's size; of size 0 x 0 when no algorithm made one.
    BitMask foreground;
};

}  // namespace qel::algorithm::video
