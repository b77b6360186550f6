#include "mqtt/spooled_line.hpp"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace qel::serve::mqtt {

using std::chrono::milliseconds;
using std::chrono::system_clock;

std::string SpooledLine::Pack() const {
    auto const sinceEpoch = std::chrono::floor<milliseconds>(time.time_since_epoch());
    std::string record = std::to_string(sinceEpoch.count());
    return record.append("\n").append(stream).append("\n").append(text);
}

std::optional<SpooledLine> SpooledLine::Unpack(std::string_view record) {
    std::size_t const first = record.find('\n');
    std::size_t const second = first == std::string_view::npos ? first : record.find('\n', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    std::int64_t count = 0;
    char const* const end = record.data() + first;
    auto const [rest, error] = std::from_chars(record.data(), end, count);
    if (error != std::errc() || rest != end) return std::nullopt;
    // Beyond what the clock can hold.
    constexpr auto Last = std::chrono::floor<milliseconds>(system_clock::time_point::max().time_since_epoch());
    if (count < -Last.count() || count > Last.count()) return std::nullopt;
    return SpooledLine{system_clock::time_point(milliseconds(count)), record.substr(first + 1, second - first - 1),
                       record.substr(second + 1)};
}

}  // namespace qel::serve::mqtt
