#pragma once

#include <string>
#include <vector>

#include "picture.hpp"
#include "qel/algorithm/video/result.hpp"

namespace qel::host {

/// Draws each object's box, and a tag with its label and confidence, on a picture.
/// frameSize: the size of the frame that the boxes are measured in; the picture may be a scaled copy of it.
void DrawObjects(Picture& picture, Picture::Size frameSize, std::vector<algorithm::video::Object> const& objects);

/// Writes a line of text into a box of the picture, given by its corner and extent in pixels, on black.
void DrawTitle(Picture& picture, unsigned int x, unsigned int y, unsigned int width, unsigned int height,
               std::string const& text);

}  // namespace qel::host
