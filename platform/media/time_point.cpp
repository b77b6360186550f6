#include "qel/media/time_point.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ostream>

namespace qel::media {

std::ostream& operator<<(std::ostream& stream, TimePoint const& timePoint) {
    using namespace std::chrono;
    // In plain integers: as nanoseconds, the start of the earliest moment's second cannot be represented.
    constexpr std::int64_t Second = 1000000000;
    std::int64_t const count = timePoint.time_since_epoch().count();
    std::int64_t const decimals = (count % Second + Second) % Second;
    sys_seconds const whole(seconds(count / Second - (count % Second < 0 ? 1 : 0)));
    auto const day = floor<days>(whole);
    year_month_day const date(day);
    hh_mm_ss<seconds> const time(whole - day);
    // Formatted apart from the stream, whose width and flags must not tear the text.
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "\"%04d-%02u-%02uT%02d:%02d:%02d.%09dZ\"", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()), static_cast<int>(decimals));
    return stream << text.data();
}

}  // namespace qel::media
