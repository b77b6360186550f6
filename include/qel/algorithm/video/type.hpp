#pragma once

#include <cstdint>

#include "qel/algorithm/export.hpp"
#include "qel/type/name.hpp"
#include "qel/type/strings.hpp"

namespace qel::algorithm::video {

/// What a video algorithm does with a frame. An algorithm keeps its type as the bit of this number in a flag set.
/// The lower-case enumerators are the same values under the names of their texts.
enum class Type : std::uint32_t {
    Inplace = 0,      ///< works on a frame that it may change
    Passthrough = 1,  ///< looks at a frame and passes it on unchanged
    Transform = 2,    ///< reserved: no algorithm of this type can be made yet
    inplace = Inplace,
    passthrough = Passthrough,
    transform = Transform,
};

}  // namespace qel::algorithm::video

template <>
struct qel::type::Name<qel::algorithm::video::Type> {
    static constexpr char const* Value = "qel.algorithm.video.Type";
};

template <>
struct qel::type::Strings<qel::algorithm::video::Type> {
    /// "inplace", "passthrough", "transform".
    QEL_ALGORITHM_EXPORT static StringMap const& GetMap();
};
