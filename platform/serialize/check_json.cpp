#include "qel/serialize/check_json.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include <boost/json/basic_parser_impl.hpp>

#include "qel/serialize/json_error.hpp"

namespace qel::serialize {

namespace {

namespace json = boost::json;

/// Whether a number has another digit than 0 before its exponent.
bool HasDigits(std::string_view text) {
    return text.substr(0, text.find_first_of("eE")).find_first_of("123456789") != std::string_view::npos;
}

/// Whether a number is nought times a power of ten past 22: the reader's conversion then counts the leading zero bits
/// of 0, which nothing defines.
bool IsFarZero(std::string_view text) {
    if (HasDigits(text)) return false;
    std::string_view const digits = text.substr(0, text.find_first_of("eE"));
    int power = 0;
    if (digits.size() < text.size()) {
        char const* const start = text.data() + digits.size() + 1;
        // The parser has refused exponents that an int cannot hold.
        std::from_chars(*start == '+' ? start + 1 : start, text.data() + text.size(), power);
    }
    std::size_t const point = digits.find('.');
    std::size_t const decimals = point == std::string_view::npos ? 0 : digits.size() - point - 1;
    return decimals > 44 || power > 22 + static_cast<int>(decimals) || power < static_cast<int>(decimals) - 22;
}

// Takes the parts of a document as the parser meets them; keeps none.
struct Handler {
    static constexpr std::size_t max_object_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_array_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_key_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_string_size = static_cast<std::size_t>(-1);

    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code&) { return true; }
    bool on_object_end(std::size_t, json::error_code&) { return true; }
    bool on_array_begin(json::error_code&) { return true; }
    bool on_array_end(std::size_t, json::error_code&) { return true; }
    bool on_key_part(json::string_view part, std::size_t, json::error_code& error) { return TakeText(part, error); }
    bool on_key(json::string_view part, std::size_t, json::error_code& error) { return TakeText(part, error); }
    bool on_string_part(json::string_view part, std::size_t, json::error_code& error) { return TakeText(part, error); }
    bool on_string(json::string_view part, std::size_t, json::error_code& error) { return TakeText(part, error); }
    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(std::int64_t, json::string_view, json::error_code&) { return true; }
    bool on_uint64(std::uint64_t, json::string_view, json::error_code&) { return true; }
    bool on_double(double value, json::string_view text, json::error_code& error) {
        hasFarZero = IsFarZero(text);
        isOutOfRange = !std::isfinite(value) || (value == 0 && HasDigits(text));
        if (hasFarZero || isOutOfRange) error = json::error::syntax;
        return !error;
    }
    bool on_bool(bool, json::error_code&) { return true; }
    bool on_null(json::error_code&) { return true; }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

    bool TakeText(json::string_view part, json::error_code& error) {
        hasNul = part.find('\0') != json::string_view::npos;
        if (hasNul) error = json::error::syntax;
        return !hasNul;
    }

    bool hasNul = false;
    bool hasFarZero = false;
    bool isOutOfRange = false;  // for a double: the reader would look for a power of ten beyond its table
};

[[noreturn]] void Throw(std::string_view text, std::size_t offset, std::string const& reason) {
    std::string_view const before = text.substr(0, offset);
    auto const line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    std::size_t const start = before.rfind('\n') + 1;  // npos + 1 is 0: the first line
    throw JsonError(line + 1, before.size() - start + 1, reason);
}

std::string ReasonOf(json::error_code const& error, Handler const& handler, std::size_t maximumDepth) {
    if (handler.hasNul) return "the character U+0000 cannot stand in a text";
    if (handler.hasFarZero) return "a nought with so many decimals or such an exponent cannot be read: write 0";
    if (handler.isOutOfRange) return "a number is too large or too small for a double";
    if (error == json::error::too_deep) {
        return "lists and objects are nested more than " + std::to_string(maximumDepth) + " deep";
    }
    if (error == json::error::incomplete) return "the document ends too early";
    return error.message();
}

}  // namespace

void CheckJson(std::string_view text, std::size_t maximumDepth) {
    std::size_t const start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    if (start == text.size()) Throw(text, start, "there is no JSON document");
    if (text[start] != '{' && text[start] != '[') Throw(text, start, "expected an object or a list");

    json::parse_options options;
    options.max_depth = maximumDepth;
    json::basic_parser<Handler> parser(options);
    json::error_code error;
    std::size_t const end = parser.write_some(false, text.data(), text.size(), error);
    if (error) Throw(text, end, ReasonOf(error, parser.handler(), maximumDepth));
    if (end != text.size()) Throw(text, end, "there is more after the end of the document");
}

}  // namespace qel::serialize
