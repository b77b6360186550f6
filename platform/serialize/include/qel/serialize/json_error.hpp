#pragma once

#include <cstddef>
#include <string>

#include <cereal/details/helpers.hpp>

#include "qel/serialize/export.hpp"

namespace qel::serialize {

/// A text is not the JSON it should be. what() is "line L, column C: REASON", counted from 1, in bytes. Any thread.
class QEL_SERIALIZE_EXPORT JsonError : public cereal::Exception {
public:
    JsonError(std::size_t line, std::size_t column, std::string const& reason);
    ~JsonError() override;

    std::size_t GetLine() const noexcept { return line_; }
    std::size_t GetColumn() const noexcept { return column_; }

private:
    std::size_t line_;
    std::size_t column_;
};

}  // namespace qel::serialize
