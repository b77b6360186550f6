#include "qel/object/bad_cast.hpp"

namespace qel::object {

namespace {

std::string Message(std::string_view source, std::string_view target) {
    std::string message = "Failed to cast the runtime object from '";
    message += source;
    message += "' to a '";
    message += target;
    message += '\'';
    return message;
}

}  // namespace

BadCast::BadCast(std::string_view source, std::string_view target)
    : message_(std::make_shared<std::string const>(Message(source, target))) {}

BadCast::BadCast(BadCast const& other) noexcept = default;

BadCast& BadCast::operator=(BadCast const& other) noexcept = default;

BadCast::~BadCast() = default;

char const* BadCast::what() const noexcept { return message_->c_str(); }

}  // namespace qel::object
