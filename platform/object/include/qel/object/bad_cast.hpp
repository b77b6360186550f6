#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

#include "qel/object/export.hpp"

namespace qel::object {

/// A run-time typed object is not of the type that was asked for. Any thread may read and copy it.
class QEL_OBJECT_EXPORT BadCast : public std::bad_cast {
public:
    /// Names the type the object has and the one that was asked for:
    /// "Failed to cast the runtime object from 'SOURCE' to a 'TARGET'".
    BadCast(std::string_view source, std::string_view target);
    BadCast(BadCast const& other) noexcept;
    BadCast& operator=(BadCast const& other) noexcept;
    ~BadCast() override;

    char const* what() const noexcept override;

private:
    // Shared, so that copying the exception cannot fail.
    std::shared_ptr<std::string const> message_;
};

}  // namespace qel::object
