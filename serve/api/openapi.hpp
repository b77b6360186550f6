#pragma once

namespace qel::serve::api {

/// A file that is built into the program.
struct EmbeddedFile {
    char const* name;
    char const* text;
};

/// openapi.json, ended by one of two null pointers.
extern EmbeddedFile const OpenApiFiles[];

}  // namespace qel::serve::api
