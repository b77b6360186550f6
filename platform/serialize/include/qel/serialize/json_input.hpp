#pragma once

#include <sstream>
#include <string>

#include <cereal/archives/json.hpp>

#include "qel/serialize/export.hpp"

namespace qel::serialize {

/// A JSON archive over a text that has been checked (see CheckJson), so that it may come from anywhere.
class QEL_SERIALIZE_EXPORT JsonInput {
public:
    /// Throws JsonError for a text that is not an acceptable JSON document.
    explicit JsonInput(std::string const& text);
    JsonInput(JsonInput const&) = delete;
    JsonInput& operator=(JsonInput const&) = delete;
    ~JsonInput();

    cereal::JSONInputArchive& GetArchive() noexcept { return archive_; }

private:
    std::istringstream stream_;
    cereal::JSONInputArchive archive_;
};

}  // namespace qel::serialize
