#include "qel/algorithm/tracking_engine.hpp"

namespace qel::type {

StringMap const& Strings<algorithm::TrackingEngine>::GetMap() {
    static StringMap const strings = {
        {0, "object_tracker"}, {1, "dl_people_tracker"}, {2, "dl_object_tracker"}, {3, "dl_skeleton_tracker"},
        {4, "hand_object"},    {5, "shelf_clearing"},    {6, "qr_code_tracker"},   {7, "dl_fisheye_tracker"},
    };
    return strings;
}

}  // namespace qel::type
