#include "qel/serialize/json_input.hpp"

#include "memory_guard.hpp"
#include "qel/serialize/check_json.hpp"

namespace qel::serialize {

namespace {

std::string const& Checked(std::string const& text) {
    CheckJson(text);
    return text;
}

/// The stream, when there is memory for the reader as well.
std::istream& Guarded(std::istream& stream, std::string const& text) {
    CheckReaderMemory(text);
    return stream;
}

}  // namespace

JsonInput::JsonInput(std::string const& text) : stream_(Checked(text)), archive_(Guarded(stream_, text)) {}

JsonInput::~JsonInput() = default;

}  // namespace qel::serialize
