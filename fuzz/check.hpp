#pragma once

#include <cstdio>
#include <cstdlib>

namespace qel::fuzz {

/// Ends the program with a message unless the condition holds.
inline void Check(bool condition, char const* message) {
    if (condition) return;
    std::fprintf(stderr, "difference: %s\n", message);
    std::abort();
}

}  // namespace qel::fuzz
