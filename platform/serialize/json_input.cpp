#include "qel/serialize/json_input.hpp"

#include "qel/serialize/check_json.hpp"

namespace qel::serialize {

namespace {

std::string const& Checked(std::string const& text) {
    CheckJson(text);
    return text;
}

}  // namespace

JsonInput::JsonInput(std::string const& text) : stream_(Checked(text)), archive_(stream_) {}

JsonInput::~JsonInput() = default;

}  // namespace qel::serialize
