#include "scene.hpp"

#include <limits>

#include "calibration/grid_overlay.hpp"
#include "canvas.hpp"
#include "jpeg.hpp"
#include "overlay.hpp"
#include "picture.hpp"

namespace qel::serve {

LivePicture Draw(Scene const& scene, LookOptions const& options) {
    host::Picture picture = host::ToPicture(scene.frame);
    auto const frameSize = picture.size;
    // Scaled first: lines and letters stay sharp, and are drawn on fewer pixels.
    if (options.maxWidth != 0 && frameSize.width > options.maxWidth) {
        picture = host::Scale(picture,
                              host::FitInto(frameSize, {options.maxWidth, std::numeric_limits<unsigned int>::max()}));
    }
    if (options.annotated) {
        if (scene.mounting) host::calibration::DrawGroundGrid(picture, frameSize, *scene.mounting);
        host::DrawObjects(picture, frameSize, scene.objects);
    }
    return {EncodeJpeg(picture, options.quality), scene.sequence, picture.size};
}

}  // namespace qel::serve
