#include "result_line.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <string_view>
#include <variant>

#include <boost/json.hpp>

#include "text.hpp"

namespace qel::host {
namespace {

using algorithm::video::Attribute;
using algorithm::video::Object;

constexpr std::array<std::string_view, 6> FixedMembers{"detection", "x", "y", "w", "h", "area"};

/// Puts JSON together; the caller sees to commas and braces.
class Line {
public:
    Line& Raw(std::string_view text) {
        text_ += text;
        return *this;
    }

    template <class Number>
    requires(std::integral<Number> || std::floating_point<Number>) Line& Value(Number number) {
        if constexpr (std::floating_point<Number>) {
            if (!std::isfinite(number)) return Raw("null");
        }
        std::array<char, 64> digits{};
        auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return Raw(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
    }
    Line& Value(bool value) { return Raw(value ? "true" : "false"); }
    Line& Value(std::string const& text) {
        return Raw(boost::json::serialize(boost::json::string_view(ToValidUtf8(text))));
    }
    template <class T>
    Line& Value(std::vector<T> const& values) {
        Raw("[");
        for (std::size_t i = 0; i < values.size(); ++i) Raw(i == 0 ? "" : ",").Value(values[i]);
        return Raw("]");
    }

    std::string Take() { return std::move(text_); }

private:
    std::string text_;
};

void AddObject(Line& line, Object const& object, double width, double height) {
    auto const& box = object.box;
    line.Raw(R"({"detection":{"bounding_box":{"x_min":)").Value(box.x0 / width);
    line.Raw(R"(,"y_min":)").Value(box.y0 / height);
    line.Raw(R"(,"x_max":)").Value(box.x1 / width);
    line.Raw(R"(,"y_max":)").Value(box.y1 / height);
    line.Raw(R"(},"confidence":)").Value(object.confidence);
    line.Raw(R"(,"label":)").Value(object.label);
    line.Raw(R"(},"x":)").Value(box.x0).Raw(R"(,"y":)").Value(box.y0);
    line.Raw(R"(,"w":)").Value(std::max(box.x1, box.x0) - box.x0);
    line.Raw(R"(,"h":)").Value(std::max(box.y1, box.y0) - box.y0);
    line.Raw(R"(,"area":)").Value(object.area);
    for (auto const& [name, attribute] : object.attributes) {
        if (std::find(FixedMembers.begin(), FixedMembers.end(), name) != FixedMembers.end()) continue;
        line.Raw(",").Value(name).Raw(":");
        std::visit([&line](auto const& value) { line.Value(value); }, attribute);
    }
    line.Raw("}");
}

}  // namespace

std::string MakeResultLine(std::string const& source, AnalysedFrame const& analysed) {
    auto const size = analysed.frame.GetSize();
    Line line;
    line.Raw(R"({"frame":)").Value(analysed.index);
    line.Raw(R"(,"timestamp":)").Value(analysed.frame.GetTimestamp().time_since_epoch().count());
    if (analysed.gap) line.Raw(R"(,"gap":)").Value(analysed.gap->count());
    line.Raw(R"(,"source":)").Value(source);
    line.Raw(R"(,"resolution":{"width":)").Value(size.width).Raw(R"(,"height":)").Value(size.height);
    line.Raw(R"(},"objects":[)");
    auto const& objects = analysed.result.objects;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (i != 0) line.Raw(",");
        AddObject(line, objects[i], size.width, size.height);
    }
    line.Raw("]}\n");
    return line.Take();
}

}  // namespace qel::host
