#pragma once

#include <cstdint>

#include "qel/logging/export.hpp"
#include "qel/type/name.hpp"
#include "qel/type/strings.hpp"

namespace qel::logging {

/// How much a line matters; a logger writes the lines at or above its threshold.
enum class Level : std::uint8_t {
    Debug = 1,        ///< for developers, in any quantity
    Information = 2,  ///< what the system does, step by step
    Notice = 4,       ///< worth reading even when all goes well
    Warning = 8,      ///< something is missing or odd; work goes on
    Error = 16,       ///< something failed
    Critical = 32,    ///< the process cannot go on
    Off = 64,         ///< as a threshold only: no line passes
};

}  // namespace qel::logging

template <>
struct QEL_LOGGING_EXPORT qel::type::Name<qel::logging::Level> {
    static constexpr char const* Value = "qel.logging.Level";
};

template <>
struct QEL_LOGGING_EXPORT qel::type::Strings<qel::logging::Level> {
    static StringMap const& GetMap();
};
