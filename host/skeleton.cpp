// The example project holds two plug-ins. A skeleton is the example without the lines (and the source) that name the
// other plug-in, and with its own plug-in renamed: there is nothing that could drift from the example, which is built
// and tested.

#include "skeleton.hpp"

#include <algorithm>
#include <utility>

#include "error.hpp"

namespace qel::host {
namespace {

constexpr char Project[] = "example_plugin";
constexpr char Prefix[] = "qel_algorithm_";

struct Plugin {
    char const* name;
    char const* className;
};

constexpr Plugin Passthrough{"bright_spots", "BrightSpots"};
constexpr Plugin Inplace{"spotlight", "Spotlight"};

bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWordPart(char c) { return IsLower(c) || IsDigit(c) || (c >= 'A' && c <= 'Z') || c == '_'; }

bool Has(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

/// Whether the text holds the word with no part of a word on either side.
bool HasWord(std::string_view text, std::string_view word) {
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        std::size_t const end = at + word.size();
        if ((at == 0 || !IsWordPart(text[at - 1])) && (end == text.size() || !IsWordPart(text[end]))) return true;
    }
    return false;
}

std::string Replace(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// The text without the lines that name the other plug-in.
std::string DropLines(std::string_view text, Plugin const& other) {
    std::string kept;
    while (!text.empty()) {
        std::string_view const line = text.substr(0, text.find('\n') + 1);
        if (!Has(line, other.name)) kept += line;
        text.remove_prefix(line.size());
    }
    return kept;
}

[[noreturn]] void Refuse(std::string_view name, std::string const& why) {
    throw UsageError("'" + std::string(name) + "' cannot be the name of a plug-in: " + why);
}

void CheckSpelling(std::string_view name) {
    constexpr std::size_t Longest = 64;
    bool const allowed =
        !name.empty() && IsLower(name.front()) && name.back() != '_' && !Has(name, "__") &&
        std::all_of(name.begin(), name.end(), [](char c) { return IsLower(c) || IsDigit(c) || c == '_'; });
    if (!allowed) {
        Refuse(name,
               "it must start with a lower-case letter and hold lower-case letters, digits and single underscores "
               "between them, such as find_faces");
    }
    if (name.size() > Longest) Refuse(name, "it has more than " + std::to_string(Longest) + " characters");
    if (name.starts_with(Prefix)) {
        Refuse(name, "lib" + std::string(Prefix) + "... is put before it anyway; leave " + Prefix + " away");
    }
    if (name == "qel") Refuse(name, "the library's own CMake package is called so; choose another");
}

}  // namespace

std::string ToClassName(std::string_view name) {
    std::string result;
    bool starts = true;
    for (char const c : name) {
        if (c != '_') result += starts && IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
        starts = c == '_';
    }
    return result;
}

std::vector<SkeletonFile> MakeSkeleton(std::string_view name, SkeletonKind kind) {
    CheckSpelling(name);
    auto const [own, other] =
        kind == SkeletonKind::Passthrough ? std::pair(Passthrough, Inplace) : std::pair(Inplace, Passthrough);
    std::string const className = ToClassName(name);
    std::vector<SkeletonFile> files;
    for (TemplateFile const* file = SkeletonTemplate; file->name != nullptr; ++file) {
        if (file->name == other.name + std::string(".cpp")) continue;
        std::string text = DropLines(file->text, other);
        if (className != own.className && HasWord(text, className)) {
            Refuse(name, "its class would be " + className +
                             ", which stands for something else in the code already; "
                             "choose another");
        }
        text = Replace(Replace(Replace(std::move(text), Project, name), own.name, name), own.className, className);
        files.push_back({Replace(file->name, own.name, name), std::move(text)});
    }
    return files;
}

}  // namespace qel::host
