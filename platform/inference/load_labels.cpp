#include "qel/inference/load_labels.hpp"

#include <exception>
#include <stdexcept>
#include <string_view>

#include "input_file.hpp"
#include "qel/inference/inference_error.hpp"

namespace qel::inference {
namespace {

/// The number of bytes of the UTF-8 character that the text starts with; 0 where there is none.
std::size_t CharacterSize(std::string_view text) {
    auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char const first = byte(0);
    if (first < 0x80) return 1;
    std::size_t const size = first >= 0xC2 && first < 0xE0   ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
    if (size == 0 || text.size() < size) return 0;
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return 0;
    }
    // Written longer than need be, half of a pair, or beyond the last character.
    if (first == 0xE0 && byte(1) < 0xA0) return 0;
    if (first == 0xED && byte(1) >= 0xA0) return 0;
    if (first == 0xF0 && byte(1) < 0x90) return 0;
    if (first == 0xF4 && byte(1) >= 0x90) return 0;
    return size;
}

std::string_view Trim(std::string_view text) {
    constexpr std::string_view blank = " \t\r";
    auto const first = text.find_first_not_of(blank);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

void CheckLabel(std::string_view label) {
    if (label.empty()) throw std::runtime_error("there is no label");
    if (label.size() > MaximumLabelSize) {
        throw std::runtime_error("the label is longer than " + std::to_string(MaximumLabelSize) + " bytes");
    }
    for (std::string_view rest = label; !rest.empty();) {
        std::size_t const size = CharacterSize(rest);
        if (size == 0) throw std::runtime_error("the label is not UTF-8");
        auto const first = static_cast<unsigned char>(rest[0]);
        if (first < 0x20 || first == 0x7F) throw std::runtime_error("the label holds a control character");
        rest.remove_prefix(size);
    }
}

std::vector<std::string> Parse(std::string_view text) {
    std::vector<std::string> labels;
    while (!text.empty()) {
        std::size_t const end = text.find('\n');
        std::string_view const label = Trim(text.substr(0, end));
        try {
            CheckLabel(label);
        } catch (std::runtime_error const& error) {
            throw std::runtime_error("line " + std::to_string(labels.size() + 1) + ": " + error.what());
        }
        labels.emplace_back(label);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    if (labels.empty()) throw std::runtime_error("is empty");
    return labels;
}

}  // namespace

std::vector<std::string> LoadLabels(boost::filesystem::path const& path) {
    try {
        return Parse(ReadRegularFile(path, MaximumLabelsSize));
    } catch (std::runtime_error const& error) {
        throw InferenceError("The labels " + path.string() + ": " + error.what());
    }
}

}  // namespace qel::inference
