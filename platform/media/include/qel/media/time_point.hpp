#pragma once

#include <chrono>
#include <iosfwd>

#include "qel/media/export.hpp"

namespace qel::media {

/// A moment of the system clock, in nanoseconds since 1970-01-01 00:00:00 UTC.
using TimePoint = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

/// Writes the moment in UTC with all nine decimals and in double quotes: "2026-03-01T12:00:00.000000001Z".
QEL_MEDIA_EXPORT std::ostream& operator<<(std::ostream& stream, TimePoint const& timePoint);

}  // namespace qel::media
