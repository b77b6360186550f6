#include "document.hpp"

#include <cmath>
#include <string_view>
#include <utility>

#include <boost/json.hpp>

#include "json_text.hpp"
#include "qel/serialize/check_json.hpp"
#include "qel/serialize/json_error.hpp"
#include "read_json.hpp"

namespace qel::serve {
namespace {

namespace json = boost::json;

void Append(std::string& text, json::value const& value, std::string const& margin);

template <class Container, class AppendElement>
void AppendAll(std::string& text, Container const& elements, char const* brackets, std::string const& margin,
               AppendElement const& append) {
    text += brackets[0];
    bool isFirst = true;
    for (auto const& element : elements) {
        text += isFirst ? "\n" : ",\n";
        text += margin + "  ";
        append(element, margin + "  ");
        isFirst = false;
    }
    if (!isFirst) text += "\n" + margin;
    text += brackets[1];
}

void Append(std::string& text, json::value const& value, std::string const& margin) {
    if (auto const* const object = value.if_object()) {
        AppendAll(text, *object, "{}", margin, [&](auto const& member, std::string const& inner) {
            text += json::serialize(member.key()) + ": ";
            Append(text, member.value(), inner);
        });
    } else {
        // Lists are short, and read best on one line.
        text += host::SerializeJson(value);
    }
}

std::string Join(std::string const& path, std::string_view name) {
    return path.empty() ? std::string(name) : path + "." + std::string(name);
}

void Check(json::value const& value, std::string const& path, std::size_t depth, std::vector<Fault>& faults) {
    bool const isNested = value.is_object() || value.is_array();
    if (isNested && depth >= MaximumNesting) {
        faults.push_back({path, "is nested more than " + std::to_string(MaximumNesting) + " deep"});
    } else if (auto const* const object = value.if_object()) {
        for (auto const& member : *object) {
            if (member.key().find('\0') != std::string_view::npos) {
                faults.push_back({path, "has a member with the character U+0000 in its name"});
                continue;
            }
            Check(member.value(), Join(path, member.key()), depth + 1, faults);
        }
    } else if (auto const* const list = value.if_array()) {
        for (std::size_t i = 0; i < list->size(); ++i) {
            Check((*list)[i], path + "[" + std::to_string(i) + "]", depth + 1, faults);
        }
    } else if (auto const* const text = value.if_string()) {
        if (text->find('\0') != json::string::npos) faults.push_back({path, "holds the character U+0000"});
    } else if (auto const* const number = value.if_double()) {
        if (!std::isfinite(*number)) faults.push_back({path, "is no finite number"});
    }
}

/// What RFC 7396 makes of a member that was not there: the patch without the members that are null.
json::value WithoutNulls(json::value const& patch) {
    if (!patch.is_object()) return patch;
    json::object made;
    MergePatch(made, patch.get_object());
    return made;
}

}  // namespace

json::object ParseDocument(std::string const& text) {
    if (text.size() > MaximumDocumentSize) {
        throw Refused(Fault{"", "is larger than " + std::to_string(MaximumDocumentSize) + " bytes"});
    }
    try {
        serialize::CheckJson(text, MaximumNesting);
    } catch (serialize::JsonError const& error) {
        throw Refused(Fault{"", error.what()});
    }
    json::value value = ReadJson(text);
    if (!value.is_object()) throw Refused(Fault{"", "line 1, column 1: expected an object, found a list"});
    return std::move(value.get_object());
}

std::string FormatDocument(json::object const& document) {
    std::string text;
    Append(text, document, "");
    text += "\n";
    if (text.size() > MaximumDocumentSize) {
        throw Refused(
            Fault{"", "the configuration would be larger than " + std::to_string(MaximumDocumentSize) + " bytes"});
    }
    return text;
}

std::vector<Fault> CheckPatch(json::object const& patch) {
    std::vector<Fault> faults;
    Check(patch, "", 0, faults);
    return faults;
}

void MergePatch(json::object& document, json::object const& patch) {
    for (auto const& [name, value] : patch) {
        auto* const present = document.if_contains(name);
        if (value.is_null()) {
            if (present != nullptr) document.stable_erase(document.find(name));
        } else if (value.is_object() && present != nullptr && present->is_object()) {
            MergePatch(present->get_object(), value.get_object());
        } else {
            document.insert_or_assign(name, WithoutNulls(value));
        }
    }
}

}  // namespace qel::serve
