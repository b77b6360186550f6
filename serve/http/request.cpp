#include "http/request.hpp"

#include <algorithm>

#include "text.hpp"

namespace qel::serve::http {
namespace {

char ToLower(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::optional<std::string_view> Find(Request::Pairs const& pairs, std::string_view name) {
    auto const found =
        std::find_if(pairs.begin(), pairs.end(), [name](auto const& pair) { return pair.first == name; });
    if (found == pairs.end()) return std::nullopt;
    return found->second;
}

int GetHexDigit(char digit) noexcept {
    if (digit >= '0' && digit <= '9') return digit - '0';
    char const letter = ToLower(digit);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// The text with its %XX resolved, and in a query each + as a blank; nothing where one is cut short, or where what
/// comes out is no text: bytes that are no UTF-8, control characters.
std::optional<std::string> Decode(std::string_view text, bool isQuery) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char letter = text[i];
        if (letter == '%') {
            int const high = i + 1 < text.size() ? GetHexDigit(text[i + 1]) : -1;
            int const low = i + 2 < text.size() ? GetHexDigit(text[i + 2]) : -1;
            if (high < 0 || low < 0) return std::nullopt;
            letter = static_cast<char>(high * 16 + low);
            i += 2;
        } else if (letter == '+' && isQuery) {
            letter = ' ';
        }
        auto const byte = static_cast<unsigned char>(letter);
        if (byte < 0x20 || byte == 0x7f) return std::nullopt;
        decoded += letter;
    }
    if (host::ToValidUtf8(decoded) != decoded) return std::nullopt;
    return decoded;
}

/// Calls with each part of a text between separators, until one is not taken.
template <class Take>
bool ForEachPart(std::string_view text, char separator, Take const& take) {
    while (true) {
        auto const end = text.find(separator);
        if (!take(text.substr(0, end))) return false;
        if (end == std::string_view::npos) return true;
        text.remove_prefix(end + 1);
    }
}

}  // namespace

std::string_view Trim(std::string_view text) noexcept {
    auto const first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return ToLower(a) == ToLower(b); });
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) { return ToLower(letter); });
    return lower;
}

std::optional<std::string_view> Request::GetHeader(std::string_view name) const { return Find(headers, name); }

std::optional<std::string_view> Request::GetQuery(std::string_view name) const { return Find(query, name); }

std::string const& Request::GetParameter(std::string_view name) const {
    auto const found = parameters.find(name);
    if (found == parameters.end()) throw std::out_of_range("the route has no such part: " + std::string(name));
    return found->second;
}

std::string Request::GetMediaType() const {
    std::string_view const type = GetHeader("content-type").value_or("");
    return ToLower(Trim(type.substr(0, type.find(';'))));
}

std::string_view Request::GetCookie(std::string_view name) const {
    std::string_view value;
    for (auto const& [header, text] : headers) {
        if (header != "cookie") continue;
        ForEachPart(text, ';', [&](std::string_view cookie) {
            auto const equals = cookie.find('=');
            if (equals == std::string_view::npos || Trim(cookie.substr(0, equals)) != name) return true;
            value = Trim(cookie.substr(equals + 1));
            return false;
        });
    }
    return value;
}

std::string ParseTarget(std::string_view target, Request& request) {
    for (std::string_view const scheme : {"http://", "https://"}) {
        if (!EqualsIgnoringCase(target.substr(0, scheme.size()), scheme)) continue;
        auto const path = target.find('/', scheme.size());
        target = path == std::string_view::npos ? "/" : target.substr(path);
    }
    if (!target.starts_with('/')) return "the path does not begin with a slash";
    if (target.find('#') != std::string_view::npos) return "a '#' in a path is written %23";
    auto const question = target.find('?');
    std::string fault;
    request.path.clear();
    ForEachPart(target.substr(1, question == std::string_view::npos ? question : question - 1), '/',
                [&](std::string_view part) {
                    auto segment = Decode(part, false);
                    if (!segment) {
                        fault =
                            "the path is no text: a '%' begins two hexadecimal digits of UTF-8 without control "
                            "characters";
                    } else if (*segment == "." || *segment == "..") {
                        fault = "the path has a segment '.' or '..'";
                    } else {
                        request.path.push_back(std::move(*segment));
                    }
                    return fault.empty();
                });
    request.query.clear();
    if (!fault.empty() || question == std::string_view::npos || question + 1 == target.size()) return fault;
    ForEachPart(target.substr(question + 1), '&', [&](std::string_view part) {
        auto const equals = part.find('=');
        auto name = Decode(part.substr(0, equals), true);
        auto value = Decode(equals == std::string_view::npos ? "" : part.substr(equals + 1), true);
        if (!name || !value) {
            fault = "the query is no text: a '%' begins two hexadecimal digits of UTF-8 without control characters";
            return false;
        }
        request.query.emplace_back(std::move(*name), std::move(*value));
        return true;
    });
    return fault;
}

}  // namespace qel::serve::http
