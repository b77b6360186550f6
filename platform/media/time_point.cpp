#include "qel/media/time_point.hpp"

#include <array>
#include <cstdio>
#include <ostream>

namespace qel::media {

std::ostream& operator<<(std::ostream& stream, TimePoint const& timePoint) {
    using namespace std::chrono;
    auto const day = floor<days>(timePoint);
    year_month_day const date(day);
    hh_mm_ss<nanoseconds> const time(timePoint - day);
    // Formatted apart from the stream, whose width and flags must not tear the text.
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "\"%04d-%02u-%02uT%02d:%02d:%02d.%09dZ\"", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    return stream << text.data();
}

}  // namespace qel::media
