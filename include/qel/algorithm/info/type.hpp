#pragma once

#include <cstdint>

#include "qel/algorithm/export.hpp"
#include "qel/type/name.hpp"
#include "qel/type/strings.hpp"

namespace qel::algorithm::info {

/// What an analytic algorithm does; published as "typename".
enum class Type : std::uint32_t {
    ObjectClassifier = 0,
    AttributeClassifier = 1,
    StateClassifier = 2,
    FrameClassifier = 3,
    ColourClassifier = 4,
    Tracker = 5,
    FeatureGenerator = 6,
};

}  // namespace qel::algorithm::info

template <>
struct qel::type::Name<qel::algorithm::info::Type> {
    static constexpr char const* Value = "qel.algorithm.info.Type";
};

template <>
struct qel::type::Strings<qel::algorithm::info::Type> {
    /// "qel.algorithm.type.ObjectClassifier" and so on.
    QEL_ALGORITHM_EXPORT static StringMap const& GetMap();
};
