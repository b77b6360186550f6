#include "format.hpp"

#include <charconv>
#include <exception>
#include <locale>
#include <sstream>

namespace qel::logging {
namespace {

/// Each argument has a stream of its own: what one sets (base, width) must not reach the next.
std::string ToText(Argument const& argument) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    try {
        argument.Write(stream);
    } catch (std::bad_alloc const&) {
        throw;
    } catch (...) {
        return "(unprintable)";
    }
    return stream ? stream.str() : "(unprintable)";
}

}  // namespace

std::string Format(std::string_view format, Argument const* arguments, std::size_t count) {
    std::string text;
    while (true) {
        auto const percent = format.find('%');
        text += format.substr(0, percent);
        if (percent == std::string_view::npos) return text;
        format.remove_prefix(percent);

        std::size_t index = 0;
        char const* const digits = format.data() + 1;
        char const* const end = format.data() + format.size();
        auto const [rest, error] = std::from_chars(digits, end, index);
        bool const closed = rest != end && *rest == '%';
        if (rest == digits) {
            text += '%';
            format.remove_prefix(closed ? 2 : 1);
        } else if (closed && error == std::errc() && index < count) {
            text += ToText(arguments[index]);
            format.remove_prefix(static_cast<std::size_t>(rest - format.data()) + 1);
        } else {
            // A placeholder without an argument is kept whole: its last "%" opens nothing.
            std::size_t const size = static_cast<std::size_t>(rest - format.data()) + (closed ? 1 : 0);
            text += format.substr(0, size);
            format.remove_prefix(size);
        }
    }
}

}  // namespace qel::logging
