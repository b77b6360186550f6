#include "json_text.hpp"

#include <array>
#include <charconv>

#include <boost/json.hpp>

namespace qel::host {
namespace {

/// The shortest text that is read back as the number.
std::string FormatDouble(double number) {
    std::array<char, 64> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {digits.data(), end};
}

void Append(std::string& text, boost::json::value const& value) {
    if (value.is_double()) {
        std::string const number = FormatDouble(value.get_double());
        text += number;
        // So that readers that tell them apart do not take it for an integer.
        if (number.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
    } else if (auto const* const array = value.if_array()) {
        text += '[';
        for (std::size_t i = 0; i < array->size(); ++i) {
            if (i != 0) text += ',';
            Append(text, (*array)[i]);
        }
        text += ']';
    } else if (auto const* const object = value.if_object()) {
        text += '{';
        for (auto const& member : *object) {
            if (text.back() != '{') text += ',';
            text += boost::json::serialize(member.key()) + ':';
            Append(text, member.value());
        }
        text += '}';
    } else {
        text += boost::json::serialize(value);
    }
}

}  // namespace

std::string SerializeJson(boost::json::value const& value) {
    std::string text;
    Append(text, value);
    return text;
}

std::string FormatJson(boost::json::value const& value) {
    if (value.is_string()) return std::string(value.get_string().c_str(), value.get_string().size());
    if (value.is_double()) return FormatDouble(value.get_double());
    if (!value.is_array()) return boost::json::serialize(value);
    std::string text;
    for (boost::json::value const& element : value.get_array()) {
        if (!text.empty()) text += ", ";
        text += FormatJson(element);
    }
    return text;
}

}  // namespace qel::host
