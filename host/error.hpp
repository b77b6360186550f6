#pragma once

#include <stdexcept>
#include <string>

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

/// A stream that cannot be reached, fell silent or went away; it may come back.
class LostError : public Error {
public:
    /// silent: whether it is still connected, as far as anybody can tell, but gave no frame for too long.
    explicit LostError(std::string const& text, bool silent = false) : Error(text), silent_(silent) {}

    bool IsSilent() const noexcept { return silent_; }

private:
    bool silent_;
};

}  // namespace qel::host
