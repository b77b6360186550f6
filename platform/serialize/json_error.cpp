#include "qel/serialize/json_error.hpp"

namespace qel::serialize {

JsonError::JsonError(std::size_t line, std::size_t column, std::string const& reason)
    : cereal::Exception("line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason),
      line_(line),
      column_(column) {}

JsonError::~JsonError() = default;

}  // namespace qel::serialize
