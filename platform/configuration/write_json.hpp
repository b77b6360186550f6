#pragma once

#include <string>

#include <cereal/archives/json.hpp>

#include "qel/object/primitive_value.hpp"

namespace qel::configuration::detail {

/// Writes a value under the archive's next name.
template <object::PrimitiveValue T>
void WriteJson(cereal::JSONOutputArchive& archive, T const& value) {
    archive.writeName();
    if constexpr (std::is_same_v<T, unsigned char>) {
        archive.saveValue(static_cast<unsigned int>(value));
    } else {
        archive.saveValue(value);
    }
}

/// Writes a value under a name.
template <object::PrimitiveValue T>
void WriteJson(cereal::JSONOutputArchive& archive, char const* name, T const& value) {
    archive.setNextName(name);
    WriteJson(archive, value);
}

inline void WriteJson(cereal::JSONOutputArchive& archive, char const* name, char const* text) {
    WriteJson(archive, name, std::string(text));
}

}  // namespace qel::configuration::detail
