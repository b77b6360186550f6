#include "calibration_arguments.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "calibration/text.hpp"
#include "error.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

namespace calibration = host::calibration;

template <class T>
std::optional<T> ToNumber(std::string_view text) {
    T value{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<double> ToFinite(std::string_view text) {
    auto const value = ToNumber<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

/// The parts before and after the first separator; nothing without one.
struct Halves {
    std::string_view first, second;
};
std::optional<Halves> Split(std::string_view text, char separator) {
    std::size_t const at = text.find(separator);
    if (at == std::string_view::npos) return std::nullopt;
    return Halves{text.substr(0, at), text.substr(at + 1)};
}

std::optional<calibration::Pixel> ToPixel(std::string_view text) {
    auto const halves = Split(text, ',');
    if (!halves) return std::nullopt;
    auto const x = ToFinite(halves->first), y = ToFinite(halves->second);
    if (!x || !y) return std::nullopt;
    return calibration::Pixel{*x, *y};
}

[[noreturn]] void Refuse(std::string const& option, std::string const& expected, std::string const& text) {
    throw host::UsageError(option + ": expected " + expected + ", not '" + text + "'");
}

}  // namespace

calibration::Size ParseSize(std::string const& option, std::string const& text) {
    constexpr int Largest = 65536;
    auto const halves = Split(text, 'x');
    auto const width = halves ? ToNumber<int>(halves->first) : std::nullopt;
    auto const height = halves ? ToNumber<int>(halves->second) : std::nullopt;
    auto const isSide = [](std::optional<int> side) { return side && *side >= 1 && *side <= Largest; };
    if (!isSide(width) || !isSide(height)) Refuse(option, "a size in pixels such as 768x576", text);
    return {*width, *height};
}

calibration::Pixel ParsePixel(std::string const& option, std::string const& text) {
    auto const pixel = ToPixel(text);
    if (!pixel) Refuse(option, "a position in pixels such as 120,400.5", text);
    return *pixel;
}

calibration::Reference ParseReference(std::string const& option, calibration::Reference::Kind kind,
                                      std::string const& text) {
    auto const ends = Split(text, ':');
    auto const rest = ends ? Split(ends->second, '=') : std::nullopt;
    auto const length = rest ? Split(rest->second, '~').value_or(Halves{rest->second, "0"}) : Halves{};
    auto const from = ends ? ToPixel(ends->first) : std::nullopt, to = rest ? ToPixel(rest->first) : std::nullopt;
    auto const metres = ToFinite(length.first), tolerance = ToFinite(length.second);
    if (!from || !to || !metres || !tolerance) {
        Refuse(option, "two positions in pixels and a length in metres such as 120,400:380,410=5.2", text);
    }
    return {kind, *from, *to, *metres, *tolerance};
}

void ParseFixed(std::string const& text, calibration::Problem& problem) {
    std::vector<std::string> const known(calibration::ParameterNames.begin(), calibration::ParameterNames.end());
    auto const halves = Split(text, '=');
    auto const value = halves ? ToFinite(halves->second) : std::nullopt;
    if (!value) Refuse("--fix", "a parameter and its value such as roll=0", text);
    std::string const name(halves->first);
    auto const place = std::find(known.begin(), known.end(), name);
    if (place == known.end()) {
        throw host::UsageError("--fix: there is no parameter '" + name + "'; did you mean '" +
                               host::FindNearest(name, known) + "'? (" + host::Join(known) + ")");
    }
    problem.fixed[static_cast<std::size_t>(place - known.begin())] = *value;
}

}  // namespace qel::app
