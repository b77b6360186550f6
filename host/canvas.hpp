#pragma once

#include <memory>
#include <string>

#include <cairo.h>

#include "picture.hpp"

namespace qel::host {

/// The deleter of cairo's objects.
struct CairoRelease {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
};

/// Draws on a picture, which must outlive the canvas; what was drawn is in the picture once the canvas is gone.
class Canvas {
public:
    explicit Canvas(Picture& picture);

    cairo_t* Get() const noexcept { return context_.get(); }

    /// Draws another picture scaled into a rectangle, given by its corner and extent in pixels.
    void DrawPicture(Picture const& picture, double x, double y, double width, double height) const;

private:
    std::unique_ptr<cairo_surface_t, CairoRelease> surface_;
    std::unique_ptr<cairo_t, CairoRelease> context_;
};

/// The largest size of the same shape, within a limit, at least 1 x 1; never larger than the size itself.
Picture::Size FitInto(Picture::Size size, Picture::Size limit);

/// The picture scaled to a size.
Picture Scale(Picture const& picture, Picture::Size size);

/// The picture scaled to fit into a size without changing its shape, in the middle, with black around it.
Picture Letterbox(Picture const& picture, Picture::Size size);

/// The picture as the bytes of a PNG file.
std::string ToPng(Picture const& picture);

}  // namespace qel::host
