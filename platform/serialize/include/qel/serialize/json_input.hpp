#pragma once

#include <sstream>
#include <string>

#include <cereal/archives/json.hpp>

#include "qel/serialize/export.hpp"

namespace qel::serialize {

/// A JSON archive over a text that has been checked (see CheckJson), so that it may come from anywhere.
///
/// One thread at a time.
class QEL_SERIALIZE_EXPORT JsonInput {
public:
    /// Throws JsonError for a text that is not an acceptable JSON document, and std::bad_alloc where there is not
    /// enough memory for the reader, some 100 bytes a value: it would not notice itself and end the process.
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
