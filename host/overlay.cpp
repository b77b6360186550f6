#include "overlay.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <variant>

#include "canvas.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "text.hpp"

namespace qel::host {
namespace {

using algorithm::video::Object;

struct Colour {
    double red, green, blue;
};

/// Bright enough for black letters upon them, and to stand out from most scenes.
constexpr std::array<Colour, 8> Palette{{
    {1.00, 0.84, 0.00},
    {0.20, 0.90, 1.00},
    {0.45, 1.00, 0.35},
    {1.00, 0.55, 0.75},
    {1.00, 0.62, 0.20},
    {0.75, 0.70, 1.00},
    {0.30, 1.00, 0.80},
    {0.95, 0.95, 0.95},
}};

/// Objects of one label have one colour, in every picture.
Colour ColourOf(std::string const& label) { return Palette[hash::MurmurThree32(label).GetValue() % Palette.size()]; }

void SetColour(cairo_t* context, Colour const& colour, double alpha = 1) {
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, alpha);
}

/// An object's attribute of that name; null when it has none, or one of another type.
template <class T>
T const* Find(Object const& object, std::string_view name) {
    auto const attribute = object.attributes.find(name);
    return attribute == object.attributes.end() ? nullptr : std::get_if<T>(&attribute->second);
}

std::string TagOf(Object const& object) {
    std::string const sure = std::isfinite(object.confidence)
                                 ? std::to_string(std::lround(std::clamp(object.confidence, 0.0F, 1.0F) * 100)) + " %"
                                 : std::string("?");
    std::string tag = object.label.empty() ? sure : ToValidUtf8(object.label) + " " + sure;
    if (auto const* const height = Find<double>(object, "height_m")) tag += "  " + FormatNumber(*height, 2) + " m";
    if (auto const* const colours = Find<std::vector<std::string>>(object, "colours")) {
        for (std::size_t i = 0; i < colours->size(); ++i) tag += (i == 0 ? "  " : "/") + ToValidUtf8((*colours)[i]);
    }
    return tag;
}

/// How lines and letters are sized: by the picture's shorter side, so that they look alike at every resolution.
struct Style {
    explicit Style(Picture::Size size)
        : line(std::max(2.0, std::min(size.width, size.height) / 300.0)),
          font(std::max(9.0, std::min(size.width, size.height) / 42.0)) {}

    double line;
    double font;
};

void DrawBox(cairo_t* context, Style const& style, double x, double y, double width, double height,
             Colour const& colour) {
    cairo_rectangle(context, x, y, width, height);
    cairo_set_line_width(context, style.line * 2);
    cairo_set_source_rgba(context, 0, 0, 0, 0.55);
    cairo_stroke_preserve(context);
    cairo_set_line_width(context, style.line);
    SetColour(context, colour);
    cairo_stroke(context);
}

/// The tag stands on the box, or hangs from its top edge when there is no room above; it stays inside the picture.
void DrawTag(cairo_t* context, Style const& style, Picture::Size size, double x, double y, std::string const& text,
             Colour const& colour) {
    cairo_text_extents_t extents;
    cairo_text_extents(context, text.c_str(), &extents);
    double const margin = style.font * 0.25;
    double const width = extents.x_advance + 2 * margin;
    double const height = style.font * 1.25;
    double const left = std::clamp(x - style.line, 0.0, std::max(0.0, size.width - width));
    double const top = y - height < 0 ? y : y - height;
    cairo_rectangle(context, left, top, width, height);
    SetColour(context, colour, 0.85);
    cairo_fill(context);
    cairo_set_source_rgb(context, 0, 0, 0);
    cairo_move_to(context, left + margin, top + style.font * 0.97);
    cairo_show_text(context, text.c_str());
}

void SelectFont(cairo_t* context, double size) {
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
}

}  // namespace

void DrawObjects(Picture& picture, Picture::Size frameSize, std::vector<Object> const& objects) {
    if (picture.pixels.empty() || objects.empty()) return;
    Style const style(picture.size);
    double const scaleX = static_cast<double>(picture.size.width) / frameSize.width;
    double const scaleY = static_cast<double>(picture.size.height) / frameSize.height;
    Canvas const canvas(picture);
    SelectFont(canvas.Get(), style.font);
    for (Object const& object : objects) {
        DrawBox(canvas.Get(), style, object.box.x0 * scaleX, object.box.y0 * scaleY,
                (static_cast<double>(object.box.x1) - object.box.x0) * scaleX,
                (static_cast<double>(object.box.y1) - object.box.y0) * scaleY, ColourOf(object.label));
    }
    for (Object const& object : objects) {
        DrawTag(canvas.Get(), style, picture.size, object.box.x0 * scaleX, object.box.y0 * scaleY, TagOf(object),
                ColourOf(object.label));
    }
}

void DrawLines(Picture& picture, Picture::Size frameSize, std::vector<OverlayLine> const& lines) {
    if (picture.pixels.empty() || lines.empty()) return;
    Style const style(picture.size);
    double const scaleX = static_cast<double>(picture.size.width) / frameSize.width;
    double const scaleY = static_cast<double>(picture.size.height) / frameSize.height;
    Canvas const canvas(picture);
    cairo_t* const context = canvas.Get();
    cairo_set_line_width(context, style.line * 0.5);
    cairo_set_source_rgba(context, 1, 1, 1, 0.45);
    for (OverlayLine const& line : lines) {
        cairo_move_to(context, line.from.x * scaleX, line.from.y * scaleY);
        cairo_line_to(context, line.to.x * scaleX, line.to.y * scaleY);
    }
    cairo_stroke(context);
    SelectFont(context, style.font * 0.8);
    cairo_set_source_rgba(context, 1, 1, 1, 0.85);
    for (OverlayLine const& line : lines) {
        if (line.label.empty()) continue;
        cairo_move_to(context, line.labelAt.x * scaleX + style.line, line.labelAt.y * scaleY - style.line);
        cairo_show_text(context, line.label.c_str());
    }
}

void DrawTitle(Picture& picture, unsigned int x, unsigned int y, unsigned int width, unsigned int height,
               std::string const& text) {
    Canvas const canvas(picture);
    cairo_t* const context = canvas.Get();
    cairo_rectangle(context, x, y, width, height);
    cairo_clip_preserve(context);
    cairo_set_source_rgb(context, 0, 0, 0);
    cairo_fill(context);
    SelectFont(context, height * 0.62);
    cairo_set_source_rgb(context, 1, 1, 1);
    cairo_move_to(context, x + height * 0.3, y + height * 0.72);
    cairo_show_text(context, text.c_str());
}

}  // namespace qel::host
