#pragma once

#include <stdexcept>

namespace qel::host {

/// Why a run cannot go on, as one line for the person who started it: what, where and, if it helps, what to do.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The request itself is wrong: an unknown algorithm or property, a value out of its range.
class UsageError : public Error {
public:
    using Error::Error;
};

}  // namespace qel::host
