#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace qel::serve::mqtt {

/// A line of results as it lies in the spool: milliseconds since 1970 in decimal digits, the stream and the line, with
/// a line feed after each of the first two.
struct SpooledLine {
    std::chrono::system_clock::time_point time{};
    std::string_view stream{};
    /// Without its line end.
    std::string_view text{};

    std::string Pack() const;
    /// Of what Pack made, which the parts refer to; nothing of any other record: a spool lies on the disk, where others
    /// may have written it.
    static std::optional<SpooledLine> Unpack(std::string_view record);
};

}  // namespace qel::serve::mqtt
