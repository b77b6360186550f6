#include "read_json.hpp"

#include <charconv>
#include <cstddef>
#include <cstdint>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <boost/system/system_error.hpp>

#include "qel/serialize/check_json.hpp"

namespace qel::serve {
namespace {

namespace json = boost::json;

// The parser's own conversion of numbers with many digits may be off by the last one; it hands on their text as well.
// Each function takes what the parser has met, and tells it to go on.
struct Handler {
    static constexpr std::size_t max_object_size = json::object::max_size();
    static constexpr std::size_t max_array_size = json::array::max_size();
    static constexpr std::size_t max_key_size = json::string::max_size();
    static constexpr std::size_t max_string_size = json::string::max_size();

    bool on_document_begin(json::error_code&) {
        stack.reset();
        return true;
    }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code&) { return true; }
    bool on_object_end(std::size_t size, json::error_code&) {
        stack.push_object(size);
        return true;
    }
    bool on_array_begin(json::error_code&) { return true; }
    bool on_array_end(std::size_t size, json::error_code&) {
        stack.push_array(size);
        return true;
    }
    bool on_key_part(json::string_view part, std::size_t, json::error_code&) {
        stack.push_chars(part);
        return true;
    }
    bool on_key(json::string_view part, std::size_t, json::error_code&) {
        stack.push_key(part);
        return true;
    }
    bool on_string_part(json::string_view part, std::size_t, json::error_code&) {
        stack.push_chars(part);
        return true;
    }
    bool on_string(json::string_view part, std::size_t, json::error_code&) {
        stack.push_string(part);
        return true;
    }
    // The text is one whole: numbers come in one part.
    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(std::int64_t value, json::string_view, json::error_code&) {
        stack.push_int64(value);
        return true;
    }
    bool on_uint64(std::uint64_t value, json::string_view, json::error_code&) {
        stack.push_uint64(value);
        return true;
    }
    bool on_double(double value, json::string_view text, json::error_code&) {
        // Leaves the parser's own infinity or nought where no double is near the number.
        std::from_chars(text.data(), text.data() + text.size(), value);
        stack.push_double(value);
        return true;
    }
    bool on_bool(bool value, json::error_code&) {
        stack.push_bool(value);
        return true;
    }
    bool on_null(json::error_code&) {
        stack.push_null();
        return true;
    }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

    json::value_stack stack;
};

}  // namespace

json::value ReadJson(std::string_view text) {
    json::parse_options options;
    options.max_depth = serialize::MaximumDepth;
    json::basic_parser<Handler> parser{options};
    json::error_code error;
    std::size_t const length = parser.write_some(false, text.data(), text.size(), error);
    if (!error && length < text.size()) error = json::error::extra_data;
    if (error) throw boost::system::system_error(error);
    return parser.handler().stack.release();
}

}  // namespace qel::serve
