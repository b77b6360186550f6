#pragma once

#include <string>
#include <vector>

#include "picture.hpp"
#include "qel/algorithm/video/result.hpp"
#include "qel/geometry/point.hpp"

namespace qel::host {

/// Draws each object's box, and a tag with its label and confidence and, where it was measured, its height (the
/// attribute "height_m"), on a picture. frameSize: the size of the frame that the boxes are measured in; the picture
/// may be a scaled copy of it.
void DrawObjects(Picture& picture, Picture::Size frameSize, std::vector<algorithm::video::Object> const& objects);

/// A line in pixels of a frame, and a text beside one of its points where that lies in the picture; empty for none.
struct OverlayLine {
    geometry::Point<double, 2> from, to, labelAt;
    std::string label;
};

/// Draws thin light lines, such as a grid on the ground. frameSize: as for DrawObjects.
void DrawLines(Picture& picture, Picture::Size frameSize, std::vector<OverlayLine> const& lines);

/// Writes a line of text into a box of the picture, given by its corner and extent in pixels, on black.
void DrawTitle(Picture& picture, unsigned int x, unsigned int y, unsigned int width, unsigned int height,
               std::string const& text);

}  // namespace qel::host
