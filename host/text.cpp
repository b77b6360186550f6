#include "text.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace qel::host {
namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";

bool IsIn(unsigned char byte, unsigned int first, unsigned int last) { return byte >= first && byte <= last; }

/// The length of the well-formed character that the text begins with; 0 when it begins with none.
/// The ranges are those of the Unicode standard's table of well-formed byte sequences.
std::size_t CharacterLength(std::string_view text) {
    auto const at = [text](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    auto const follows = [&at](std::size_t i) { return IsIn(static_cast<unsigned char>(at(i)), 0x80, 0xBF); };
    auto const lead = static_cast<unsigned char>(at(0));
    auto const second = static_cast<unsigned char>(at(1));
    if (lead < 0x80) return 1;
    if (IsIn(lead, 0xC2, 0xDF)) return follows(1) ? 2 : 0;
    if (IsIn(lead, 0xE0, 0xEF)) {
        unsigned int const low = lead == 0xE0 ? 0xA0 : 0x80;
        unsigned int const high = lead == 0xED ? 0x9F : 0xBF;
        return IsIn(second, low, high) && follows(2) ? 3 : 0;
    }
    if (IsIn(lead, 0xF0, 0xF4)) {
        unsigned int const low = lead == 0xF0 ? 0x90 : 0x80;
        unsigned int const high = lead == 0xF4 ? 0x8F : 0xBF;
        return IsIn(second, low, high) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

/// The optimal string alignment distance, over three rows of its table.
std::size_t Distance(std::string const& left, std::string const& right) {
    std::vector<std::size_t> beforeLast(right.size() + 1);
    std::vector<std::size_t> last(right.size() + 1);
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            std::size_t const change = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, change});
            bool const swapped = i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
            if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[right.size()];
}

}  // namespace

std::string ToValidUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        std::size_t const length = CharacterLength(text);
        valid += length == 0 ? Replacement : text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return valid;
}

std::string FormatTime(std::chrono::nanoseconds time, int decimals) {
    long long const milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    long long const seconds = milliseconds / 1000;
    std::array<char, 64> text{};
    if (seconds >= 3600) {
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
    } else {
        std::snprintf(text.data(), text.size(), "%lld:%02lld", seconds / 60, seconds % 60);
    }
    std::string result = text.data();
    if (decimals > 0) {
        std::snprintf(text.data(), text.size(), ".%03lld", milliseconds % 1000);
        result.append(text.data(), static_cast<std::size_t>(decimals) + 1);
    }
    return result;
}

std::string FormatNumber(double value, int decimals) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

std::string FindNearest(std::string_view name, std::vector<std::string> const& known) {
    std::string const wanted = ToLower(name);
    std::string nearest;
    std::optional<std::size_t> fewest;
    for (std::string const& candidate : known) {
        std::size_t const distance = Distance(wanted, ToLower(candidate));
        if (fewest && *fewest <= distance) continue;
        fewest = distance;
        nearest = candidate;
    }
    return nearest;
}

bool IsSameName(std::string_view left, std::string_view right) {
    auto const letters = [](std::string_view name) {
        std::string text = ToLower(name);
        std::erase_if(text, [](char c) { return c == '_' || c == '-'; });
        return text;
    };
    return letters(left) == letters(right);
}

std::string Join(std::vector<std::string> const& names) {
    std::string text;
    for (std::string const& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

}  // namespace qel::host
