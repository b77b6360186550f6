#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "qel/configuration/archive.hpp"
#include "qel/object/primitive.hpp"

namespace qel::configuration::detail {

/// Reads the archive's next value as a T. Throws cereal::Exception, with the path, for a value of another JSON type or
/// none, and the out-of-range error of object::Parse for a whole number that T cannot hold.
template <object::PrimitiveValue T>
T ReadJson(cereal::JSONInputArchive& archive, std::string const& path);

/// Reads the archive's next value as a String, Bool, Int64 or Double, as it comes.
std::shared_ptr<object::Object const> ReadAnyJson(cereal::JSONInputArchive& archive, std::string const& path);

/// Opens the archive's next value, which must be an object, runs the action inside it and closes it.
void ReadObject(cereal::JSONInputArchive& archive, std::string const& path, std::function<void()> const& action);

/// The same for a list; the action takes the number of its elements.
void ReadList(cereal::JSONInputArchive& archive, std::string const& path,
              std::function<void(std::size_t)> const& action);

/// Whether the archive stands in a list (and not in an object).
bool IsInList(cereal::JSONInputArchive& archive);

/// Throws the cereal::Exception "PATH: expected EXPECTED, found ..." about the archive's next value.
[[noreturn]] void ThrowUnexpected(cereal::JSONInputArchive& archive, std::string const& path,
                                  std::string const& expected);

}  // namespace qel::configuration::detail
