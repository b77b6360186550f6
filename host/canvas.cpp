#include "canvas.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qel::host {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, CairoRelease>;

/// A surface over the picture's own pixels. cairo takes them as writable also where it only reads.
Surface SurfaceOver(Picture const& picture) {
    auto* const bytes = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(picture.pixels.data()));
    Surface surface(cairo_image_surface_create_for_data(bytes, CAIRO_FORMAT_RGB24, static_cast<int>(picture.size.width),
                                                        static_cast<int>(picture.size.height),
                                                        static_cast<int>(4 * picture.size.width)));
    cairo_status_t const status = cairo_surface_status(surface.get());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error(std::string("cannot draw a picture: ") + cairo_status_to_string(status));
    }
    return surface;
}

cairo_status_t Append(void* text, unsigned char const* data, unsigned int length) {
    static_cast<std::string*>(text)->append(reinterpret_cast<char const*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

Canvas::Canvas(Picture& picture) : surface_(SurfaceOver(picture)), context_(cairo_create(surface_.get())) {}

void Canvas::DrawPicture(Picture const& picture, double x, double y, double width, double height) const {
    Surface const source = SurfaceOver(picture);
    cairo_t* const context = context_.get();
    cairo_save(context);
    cairo_translate(context, x, y);
    cairo_scale(context, width / picture.size.width, height / picture.size.height);
    cairo_set_source_surface(context, source.get(), 0, 0);
    // Without it the borders of a scaled picture blend with what lies beyond them.
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    // Down to half the size nothing is lost by the filter that looks at four pixels, which is far quicker.
    bool const slight = 2 * width >= picture.size.width && 2 * height >= picture.size.height;
    cairo_pattern_set_filter(cairo_get_source(context), slight ? CAIRO_FILTER_BILINEAR : CAIRO_FILTER_GOOD);
    cairo_rectangle(context, 0, 0, picture.size.width, picture.size.height);
    cairo_fill(context);
    cairo_restore(context);
}

Picture::Size FitInto(Picture::Size size, Picture::Size limit) {
    double const factor =
        std::min({1.0, static_cast<double>(limit.width) / size.width, static_cast<double>(limit.height) / size.height});
    auto const scaled = [factor](unsigned int length) {
        return std::max(1U, static_cast<unsigned int>(std::lround(length * factor)));
    };
    return {scaled(size.width), scaled(size.height)};
}

Picture Scale(Picture const& picture, Picture::Size size) {
    Picture scaled(size);
    Canvas(scaled).DrawPicture(picture, 0, 0, size.width, size.height);
    return scaled;
}

Picture Letterbox(Picture const& picture, Picture::Size size) {
    double const factor = std::min(double(size.width) / picture.size.width, double(size.height) / picture.size.height);
    double const width = factor * picture.size.width;
    double const height = factor * picture.size.height;
    Picture framed(size);
    Canvas(framed).DrawPicture(picture, (size.width - width) / 2, (size.height - height) / 2, width, height);
    return framed;
}

std::string ToPng(Picture const& picture) {
    std::string bytes;
    cairo_status_t const status = cairo_surface_write_to_png_stream(SurfaceOver(picture).get(), Append, &bytes);
    if (status != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error(std::string("cannot make a PNG: ") + cairo_status_to_string(status));
    }
    return bytes;
}

}  // namespace qel::host
