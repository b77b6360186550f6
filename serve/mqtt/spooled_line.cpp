#include "mqtt/spooled_line.hpp"

#include <charconv>
#include <cstdint>

namespace qel::serve::mqtt {

using std::chrono::milliseconds;

std::string SpooledLine::Pack() const {
    auto const sinceEpoch = std::chrono::floor<milliseconds>(time.time_since_epoch());
    std::string record = std::to_string(sinceEpoch.count());
    return record.append("\n").append(stream).append("\n").append(text);
}

SpooledLine SpooledLine::Unpack(std::string_view record) {
    std::size_t const first = record.find('\n');
    std::size_t const second = record.find('\n', first + 1);
    std::int64_t count = 0;
    std::from_chars(record.data(), record.data() + first, count);
    return {std::chrono::system_clock::time_point(milliseconds(count)), record.substr(first + 1, second - first - 1),
            record.substr(second + 1)};
}

}  // namespace qel::serve::mqtt
