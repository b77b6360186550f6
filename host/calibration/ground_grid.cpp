#include "calibration/ground_grid.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "calibration/text.hpp"

namespace qel::host::calibration {
namespace {

/// Meshes to each side and ahead; further ones would merge.
constexpr int Reach = 12;

double ChooseMesh(double height) {
    for (double const mesh : {0.5, 1.0, 2.0, 5.0, 10.0, 20.0}) {
        if (mesh > 0.6 * height) return mesh;
    }
    return 50;
}

/// Depth in metres at which a ground point so far ahead of the camera is seen; the same all along a line across.
double GetDepth(Mounting<double> const& mounting, double ahead) {
    double const tilt = mounting.tilt * std::numbers::pi / 180;
    return ahead * std::cos(tilt) + mounting.height * std::sin(tilt);
}

}  // namespace

std::vector<GridLine> MakeGroundGrid(Mounting<double> const& mounting, Size size) {
    double const mesh = ChooseMesh(mounting.height);
    Model<double> const model(mounting, size);
    // What comes near the plane through the camera would be seen at infinity.
    double const nearest = 0.1 * mounting.height;
    std::vector<double> across;
    for (int i = -Reach; i <= Reach; ++i) {
        if (GetDepth(mounting, i * mesh) > nearest) across.push_back(i * mesh);
    }
    std::vector<GridLine> lines;
    if (across.size() < 2) return lines;
    for (double const y : across) {
        lines.push_back({model.Project(-Reach * mesh, y), model.Project(Reach * mesh, y), model.Project(0, y),
                         Format(y, 4) + " m"});
    }
    for (int i = -Reach; i <= Reach; ++i) {
        lines.push_back({model.Project(i * mesh, across.front()), model.Project(i * mesh, across.back())});
    }
    return lines;
}

}  // namespace qel::host::calibration
