#pragma once

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace qel::reference {

/// Whether bytes are UTF-8 without control characters: each character is decoded and written again.
inline bool IsPlainUtf8(std::string const& text) {
    std::size_t i = 0;
    while (i < text.size()) {
        auto const first = static_cast<unsigned char>(text[i]);
        std::size_t size = 1;
        std::uint32_t code = first;
        if (first >= 0x80) {
            size = first >> 5U == 6 ? 2 : first >> 4U == 14 ? 3 : first >> 3U == 30 ? 4 : 0;
            if (size == 0 || i + size > text.size()) return false;
            code = first & (0xFFU >> (size + 1));
            for (std::size_t k = 1; k < size; ++k)
                code = code << 6U | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        }
        std::string again;
        if (code < 0x80) {
            again = {static_cast<char>(code)};
        } else if (code < 0x800) {
            again = {static_cast<char>(0xC0 | code >> 6U), static_cast<char>(0x80 | (code & 0x3FU))};
        } else if (code < 0x10000) {
            again = {static_cast<char>(0xE0 | code >> 12U), static_cast<char>(0x80 | (code >> 6U & 0x3FU)),
                     static_cast<char>(0x80 | (code & 0x3FU))};
        } else {
            again = {static_cast<char>(0xF0 | code >> 18U), static_cast<char>(0x80 | (code >> 12U & 0x3FU)),
                     static_cast<char>(0x80 | (code >> 6U & 0x3FU)), static_cast<char>(0x80 | (code & 0x3FU))};
        }
        bool const isSurrogate = code >= 0xD800 && code < 0xE000;
        if (again != text.substr(i, size) || isSurrogate || code > 0x10FFFF || code < 0x20 || code == 0x7F)
            return false;
        i += size;
    }
    return true;
}

/// The labels of a text, one a line without the blanks around it; nothing when one of them, or there being none, is
/// wrong.
inline std::optional<std::vector<std::string>> Labels(std::string const& text, std::size_t longest) {
    std::vector<std::string> labels;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::string const blank = " \t\r";
        while (!line.empty() && blank.find(line.back()) != std::string::npos) line.pop_back();
        while (!line.empty() && blank.find(line.front()) != std::string::npos) line.erase(0, 1);
        if (line.empty() || line.size() > longest || !IsPlainUtf8(line)) return std::nullopt;
        labels.push_back(line);
    }
    if (labels.empty()) return std::nullopt;
    return labels;
}

}  // namespace qel::reference
