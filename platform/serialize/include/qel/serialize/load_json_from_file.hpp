#pragma once

#include <cstddef>
#include <string>

#include <boost/filesystem/path.hpp>

#include "qel/serialize/export.hpp"
#include "qel/serialize/json_input.hpp"

namespace qel::serialize {

/// How many bytes a JSON file may have.
inline constexpr std::size_t MaximumFileSize = std::size_t{16} << 20U;

namespace detail {

/// The text of a JSON file, checked; throws cereal::Exception, with the path.
QEL_SERIALIZE_EXPORT std::string LoadJsonText(boost::filesystem::path const& path);

}  // namespace detail
}  // namespace qel::serialize

namespace cereal::utils {

/// Reads a JSON file into a value, which takes its members from the archive: `void T::Serialize(JSONInputArchive&)`.
/// Throws cereal::Exception, with the path, for a file that cannot be read, is larger than MaximumFileSize or is not
/// JSON, and what Serialize throws.
template <class T>
void LoadJsonFromFile(boost::filesystem::path const& path, T& value) {
    qel::serialize::JsonInput input(qel::serialize::detail::LoadJsonText(path));
    value.Serialize(input.GetArchive());
}

}  // namespace cereal::utils
