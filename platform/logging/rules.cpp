#include "rules.hpp"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace qel::logging {
namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view Blanks = " \t\r\n";
    auto const first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

[[noreturn]] void ThrowError(std::string_view rule, std::string const& problem) {
    throw std::invalid_argument("The logging rule '" + std::string(rule) + "' " + problem);
}

Level ParseLevel(std::string_view rule, std::string_view text) {
    std::string known;
    for (auto const& [value, name] : type::Strings<Level>::GetMap()) {
        if (text.size() >= 3 && name.starts_with(text)) return static_cast<Level>(value);
        known += (known.empty() ? "" : ", ") + name;
    }
    ThrowError(rule, "names no level: the levels are " + known);
}

/// Whether the text is a dotted name: letters, digits, "_" and "-", with a dot between the parts.
bool IsName(std::string_view text) {
    if (text.empty() || text.front() == '.' || text.back() == '.') return false;
    if (text.find("..") != std::string_view::npos) return false;
    return std::all_of(text.begin(), text.end(), [](char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_' || character == '-' ||
               character == '.';
    });
}

}  // namespace

Rules Rules::Parse(std::string_view text) {
    Rules rules;
    if (Trim(text).empty()) return rules;
    while (true) {
        auto const comma = text.find(',');
        rules.Add(Trim(text.substr(0, comma)));
        if (comma == std::string_view::npos) return rules;
        text.remove_prefix(comma + 1);
    }
}

void Rules::Add(std::string_view rule) {
    auto const equals = rule.find('=');
    if (equals == std::string_view::npos) {
        default_ = ParseLevel(rule, rule);
        return;
    }
    std::string_view const name = Trim(rule.substr(0, equals));
    if (!IsName(name)) ThrowError(rule, "names no logger: it reads name=level, as in qel.algorithm=debug");
    named_[std::string(name)] = ParseLevel(rule, Trim(rule.substr(equals + 1)));
}

Level Rules::GetThreshold(std::string_view name) const {
    while (true) {
        if (auto const found = named_.find(name); found != named_.end()) return found->second;
        auto const dot = name.rfind('.');
        if (dot == std::string_view::npos) return default_;
        name = name.substr(0, dot);
    }
}

}  // namespace qel::logging
