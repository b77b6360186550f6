#include "zone.hpp"

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string>

#include "zone_check.hpp"

namespace qel::privacy_mask {
namespace {

constexpr std::size_t MostZones = 256, MostCorners = 256;
constexpr char Blanks[] = " \t\r\n";

/// What the numbers of a unit may be, and how finely they are told apart. Both are chosen so that products of two
/// differences of corners are exact.
struct Grid {
    double smallest, largest, steps;
    char const* range;
};

Grid GridOf(Zone::Unit unit) {
    if (unit == Zone::Unit::Percent) return {-100, 200, 65536, "-100 to 200 percent"};
    return {-100000, 100000, 16, "-100000 to 100000 pixels"};
}

/// Reads a text from its start to its end.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    Zones Read() {
        Zones zones;
        while (true) {
            Zone zone = ReadZone();
            if (!zone.corners.empty()) zones.push_back(std::move(zone));
            if (zones.size() > MostZones) throw std::invalid_argument("Cannot use the zones: there are more than 256");
            if (position_ == text_.size()) return zones;
            ++position_;  // the semicolon
        }
    }

private:
    bool AtEndOfZone() const { return position_ == text_.size() || text_[position_] == ';'; }

    void SkipBlanks() { position_ = std::min(text_.find_first_not_of(Blanks, position_), text_.size()); }

    Zone ReadZone() {
        Zone zone;
        corner_ = 0;
        SkipBlanks();
        if (AtEndOfZone()) return zone;
        ++zone_;
        std::vector<geometry::Point<double, 2>> corners;
        for (; !AtEndOfZone(); SkipBlanks()) {
            ++corner_;
            double const x = ReadNumber(zone);
            SkipBlanks();
            if (AtEndOfZone() || text_[position_] != ',') Refuse("expected a comma between x and y");
            ++position_;
            double const y = ReadNumber(zone);
            if (!AtEndOfZone() && std::string_view(Blanks).find(text_[position_]) == std::string_view::npos) {
                Refuse("expected a blank or a semicolon after the corner");
            }
            geometry::Point<double, 2> const corner{x, y};
            if (corners.empty() || corner != corners.back()) corners.push_back(corner);
        }
        if (corners.size() > 1 && corners.front() == corners.back()) corners.pop_back();
        zone.corners = {corners.begin(), corners.end()};
        CheckCorners(zone);
        return zone;
    }

    double ReadNumber(Zone& zone) {
        SkipBlanks();
        double value = 0;
        char const* const start = text_.data() + position_;
        auto const [end, error] = std::from_chars(start, text_.data() + text_.size(), value);
        if (error != std::errc() || !std::isfinite(value)) Refuse("expected a number");
        std::size_t const next = position_ + static_cast<std::size_t>(end - start);
        bool const percent = next < text_.size() && text_[next] == '%';
        SetUnit(zone, percent ? Zone::Unit::Percent : Zone::Unit::Pixels);
        Grid const grid = GridOf(zone.unit);
        if (value < grid.smallest || value > grid.largest) Refuse("expected a number from " + std::string(grid.range));
        position_ = next + (percent ? 1 : 0);
        return std::floor(value * grid.steps + 0.5) / grid.steps;
    }

    void SetUnit(Zone& zone, Zone::Unit unit) {
        if (corner_ == 1 && !hasUnit_) zone.unit = unit;
        hasUnit_ = true;
        if (zone.unit != unit) Refuse("expected the whole zone in pixels, or each number of it with a percent sign");
    }

    void CheckCorners(Zone const& zone) {
        hasUnit_ = false;
        std::string const which = "Cannot use zone " + std::to_string(zone_) + ": ";
        std::size_t const count = zone.corners.size();
        if (count < 3) throw std::invalid_argument(which + "it needs three corners or more that differ");
        if (count > MostCorners) throw std::invalid_argument(which + "it has more than 256 corners");
        if (auto const meeting = FindMeeting(zone.corners)) {
            throw std::invalid_argument(which + "its sides " + std::to_string(meeting->first + 1) + " and " +
                                        std::to_string(meeting->second + 1) +
                                        " cross or touch; give its corners in their order round it, or make two zones "
                                        "of it");
        }
    }

    [[noreturn]] void Refuse(std::string const& wanted) const {
        std::string found = position_ < text_.size() ? "'" + std::string(text_.substr(position_, 12)) + "'" : "the end";
        throw std::invalid_argument("Cannot use the zones: zone " + std::to_string(zone_) + ", corner " +
                                    std::to_string(corner_) + ", character " + std::to_string(position_ + 1) + ": " +
                                    wanted + ", found " + found);
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t zone_ = 0, corner_ = 0;  // counted from 1
    bool hasUnit_ = false;
};

}  // namespace

geometry::Polygon<double> Zone::ToPixels(geometry::Dimension<unsigned int, 2> size) const {
    if (unit == Unit::Pixels) return corners;
    geometry::Polygon<double> pixels;
    for (geometry::Point<double, 2> const& corner : corners) {
        pixels.push_back({corner.x / 100 * size.width - 0.5, corner.y / 100 * size.height - 0.5});
    }
    return pixels;
}

Zones ParseZones(std::string_view text) { return Reader(text).Read(); }

}  // namespace qel::privacy_mask
