#include "calibration/grid_overlay.hpp"

#include <utility>
#include <vector>

#include "calibration/ground_grid.hpp"
#include "overlay.hpp"

namespace qel::host::calibration {

void DrawGroundGrid(Picture& picture, Picture::Size frameSize, Mounting<double> const& mounting) {
    Size const size{static_cast<int>(frameSize.width), static_cast<int>(frameSize.height)};
    std::vector<OverlayLine> lines;
    for (GridLine& line : MakeGroundGrid(mounting, size)) {
        lines.push_back({line.from, line.to, line.labelAt, std::move(line.label)});
    }
    DrawLines(picture, frameSize, lines);
}

}  // namespace qel::host::calibration
