#pragma once

#include <cstdint>

#include "qel/algorithm/export.hpp"
#include "qel/type/name.hpp"
#include "qel/type/strings.hpp"

namespace qel::algorithm {

/// Which engine follows the objects of a scene.
enum class TrackingEngine : std::uint32_t {
    ObjectTracker = 0,
    DlPeopleTracker = 1,
    DlObjectTracker = 2,
    DlSkeletonTracker = 3,
    HandObject = 4,
    ShelfClearing = 5,
    QrCodeTracker = 6,
    DlFisheyeTracker = 7,
};

}  // namespace qel::algorithm

template <>
struct qel::type::Name<qel::algorithm::TrackingEngine> {
    static constexpr char const* Value = "qel.algorithm.TrackingEngine";
};

template <>
struct qel::type::Strings<qel::algorithm::TrackingEngine> {
    /// "object_tracker", "dl_people_tracker" and so on.
    QEL_ALGORITHM_EXPORT static StringMap const& GetMap();
};
