// Calibration: measures distances on the ground and the height of a person in the picture of a camera on a mast.

#include <cstdio>
#include <stdexcept>

#include <boost/units/systems/si/length.hpp>
#include <qel/algorithm/calibration/engine.hpp>

namespace calibration = qel::algorithm::calibration;
using Point = calibration::Engine::Point;

// Positions in the picture are normalised: 0 to 65535 from the left to the right and from the top to the bottom.
unsigned short Normalise(double pixel, int pixels) { return static_cast<unsigned short>(pixel * 65536 / pixels); }

int main() {
    // The camera looks 30 degrees below the horizon from 5 m above the ground and sees 40 degrees from top to bottom.
    calibration::Engine engine;  // one for each camera, used by one thread at a time
    engine.SetCalibrationParams({30.0F, 0.0F, 5.0F * boost::units::si::meters, 40.0F});

    qel::geometry::Dimension<int, 2> const picture{1920, 1080};
    auto const at = [&](double x, double y) {
        return Point{{Normalise(x, picture.width)}, {Normalise(y, picture.height)}};
    };

    // Two marks on the ground.
    auto const length = engine.GetDistance(at(600, 700), at(1400, 700), picture);
    std::printf("the marks are %.2f m apart\n", static_cast<double>(length.value()));

    // A person: the feet, and how many pixels there are from the feet to the top of the head.
    auto const height = engine.GetHeight(at(960, 800), {Normalise(310, picture.height)}, picture);
    std::printf("the person is %.2f m tall\n", static_cast<double>(height.value()));

    // Where the picture's centre is on the ground: x to the right of the point below the camera, y ahead of it.
    auto const centre = engine.UnprojectPoint(at(960, 540));
    std::printf("the camera looks at a point %.2f m to the right and %.2f m ahead\n", static_cast<double>(centre.x),
                static_cast<double>(centre.y));

    // What cannot be measured is an exception with the reason.
    try {
        calibration::Engine().GetDistance(at(600, 700), at(1400, 700), picture);
    } catch (std::runtime_error const& error) {
        std::printf("a camera that nobody has described: %s\n", error.what());
    }
}
