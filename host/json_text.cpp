#include "json_text.hpp"

#include <array>
#include <charconv>

#include <boost/json.hpp>

namespace qel::host {

std::string FormatJson(boost::json::value const& value) {
    if (value.is_string()) return std::string(value.get_string().c_str(), value.get_string().size());
    if (value.is_double()) {
        std::array<char, 64> digits{};
        auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value.get_double()).ptr;
        return {digits.data(), end};
    }
    if (!value.is_array()) return boost::json::serialize(value);
    std::string text;
    for (boost::json::value const& element : value.get_array()) {
        if (!text.empty()) text += ", ";
        text += FormatJson(element);
    }
    return text;
}

}  // namespace qel::host
