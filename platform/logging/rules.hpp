#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "qel/logging/level.hpp"

namespace qel::logging {

/// Which threshold a logger has by its name.
class Rules {
public:
    /// All loggers have the threshold Warning.
    Rules() = default;

    /// Reads the text that Configure takes; throws std::invalid_argument when it is none.
    static Rules Parse(std::string_view text);

    Level GetThreshold(std::string_view name) const;

private:
    void Add(std::string_view rule);

    Level default_ = Level::Warning;
    std::map<std::string, Level, std::less<>> named_;
};

}  // namespace qel::logging
