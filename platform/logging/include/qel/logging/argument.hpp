#pragma once

#include <memory>
#include <ostream>

namespace qel::logging {

/// A value of any type to be written into a line: a reference to it, and how to write it. One thread at a time.
class Argument {
public:
    template <class T>
    explicit Argument(T const& value) noexcept
        : value_(std::addressof(value)),
          write_([](std::ostream& stream, void const* other) { stream << *static_cast<T const*>(other); }) {}

    void Write(std::ostream& stream) const { write_(stream, value_); }  ///< the value must still exist

private:
    void const* value_;
    void (*write_)(std::ostream&, void const*);
};

}  // namespace qel::logging
