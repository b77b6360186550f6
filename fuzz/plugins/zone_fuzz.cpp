// Zones of the privacy mask from any text: taken within the limits, or refused with a reason.
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "check.hpp"
#include "zone.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel::privacy_mask;
    try {
        Zones const zones = ParseZones({reinterpret_cast<char const*>(data), size});
        qel::fuzz::Check(zones.size() <= 256, "too many zones");
        for (Zone const& zone : zones) {
            qel::fuzz::Check(zone.corners.size() >= 3 && zone.corners.size() <= 256,
                             "a zone of too few or many corners");
            zone.ToPixels({1920, 1080});
        }
    } catch (std::invalid_argument const& error) {
        qel::fuzz::Check(!std::string_view(error.what()).empty(), "no reason is given");
    }
    return 0;
}
