// Boost.JSON keeps no positions. Where an error needs one, the text, known to be JSON by then, is walked again down the
// way to the value.
#include "calibration/json_document.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <boost/json.hpp>

#include "calibration/text.hpp"
#include "whole_file.hpp"

namespace qel::host::calibration {
namespace {

namespace json = boost::json;

/// Walks over the values of a text that is valid JSON.
class Walker {
public:
    explicit Walker(std::string_view text) : text_(text) { SkipBlanks(); }

    std::size_t GetOffset() const { return offset_; }

    /// Onto the value of a member; the last one of this name, which is the one that counts.
    void EnterMember(std::string_view name) {
        std::size_t found = offset_;
        ++offset_;
        for (SkipBlanks(); text_[offset_] != '}'; SkipSeparator()) {
            std::size_t const start = offset_;
            SkipValue();
            std::string_view const key = text_.substr(start, offset_ - start);
            SkipSeparator();
            if (json::parse(json::string_view(key.data(), key.size())).as_string() ==
                json::string_view(name.data(), name.size())) {
                found = offset_;
            }
            SkipValue();
        }
        offset_ = found;
    }

    void EnterElement(std::size_t index) {
        ++offset_;
        SkipBlanks();
        for (std::size_t i = 0; i < index; ++i) {
            SkipValue();
            SkipSeparator();
        }
    }

private:
    void SkipBlanks() {
        while (offset_ < text_.size() && std::string_view(" \t\r\n").find(text_[offset_]) != std::string_view::npos) {
            ++offset_;
        }
    }

    void SkipSeparator() {
        SkipBlanks();
        if (text_[offset_] == ',' || text_[offset_] == ':') ++offset_;
        SkipBlanks();
    }

    void SkipText() {
        for (++offset_; text_[offset_] != '"'; ++offset_) {
            if (text_[offset_] == '\\') ++offset_;
        }
        ++offset_;
    }

    void SkipValue() {
        if (text_[offset_] == '"') return SkipText();
        int depth = 0;
        do {
            char const c = text_[offset_];
            if (c == '"') {
                SkipText();
                continue;
            }
            if (c == '{' || c == '[') ++depth;
            if (c == '}' || c == ']') --depth;
            ++offset_;
        } while (depth > 0 || (offset_ < text_.size() &&
                               std::string_view(",:]} \t\r\n").find(text_[offset_]) == std::string_view::npos));
    }

    std::string_view text_;
    std::size_t offset_ = 0;
};

char const* Describe(json::value const& value) {
    switch (value.kind()) {
        case json::kind::object:
            return "an object";
        case json::kind::array:
            return "an array";
        case json::kind::string:
            return "a text";
        case json::kind::bool_:
            return "a boolean";
        case json::kind::null:
            return "null";
        default:
            return "a number";
    }
}

std::string Quote(std::string_view name) { return '"' + std::string(name) + '"'; }

}  // namespace

JsonDocument::JsonDocument(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) {
    json::parse_options options;
    options.max_depth = MaximumDepth;
    json::stream_parser parser({}, options);
    boost::system::error_code error;
    std::size_t const read = parser.write_some(text_.data(), text_.size(), error);
    if (!error && read < text_.size()) FailAt(read, "nothing may follow the value");
    if (!error) parser.finish(error);
    if (error == json::error::too_deep) {
        FailAt(read, "more than " + std::to_string(MaximumDepth) + " objects or arrays within one another");
    }
    if (error) FailAt(read, "not valid JSON: " + error.message());
    value_ = parser.release();
}

JsonDocument JsonDocument::Read(std::string const& path) { return {path, ReadFile(path, MaximumSize)}; }

JsonDocument::Cursor JsonDocument::GetRoot() const { return {*this, value_, "", {}}; }

void JsonDocument::FailAt(std::size_t offset, std::string const& what) const {
    std::string_view const before = std::string_view(text_).substr(0, offset);
    auto const line = 1 + std::count(before.begin(), before.end(), '\n');
    std::size_t const lineStart = before.rfind('\n') + 1;  // 0 in the first line, where none is found
    // Names come from the text: an error stays one line whatever they hold.
    std::string clean = what;
    std::replace_if(
        clean.begin(), clean.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
    throw Error(name_ + ':' + std::to_string(line) + ':' + std::to_string(offset - lineStart + 1) + ": " + clean);
}

std::size_t JsonDocument::Locate(std::vector<Cursor::Step> const& steps) const {
    Walker walker(text_);
    for (Cursor::Step const& step : steps) {
        if (step.member.data() != nullptr) {
            walker.EnterMember(step.member);
        } else {
            walker.EnterElement(step.index);
        }
    }
    return walker.GetOffset();
}

JsonDocument::Cursor::Cursor(JsonDocument const& document, json::value const& value, std::string path,
                             std::vector<Step> steps)
    : document_(&document), value_(&value), path_(std::move(path)), steps_(std::move(steps)) {}

void JsonDocument::Cursor::Fail(std::string const& what) const {
    document_->FailAt(document_->Locate(steps_), (path_.empty() ? "" : path_ + ": ") + what);
}

bool JsonDocument::Cursor::HasMember(std::string_view name) const {
    return value_->is_object() && value_->get_object().contains(json::string_view(name.data(), name.size()));
}

JsonDocument::Cursor JsonDocument::Cursor::GetMember(std::string_view name) const {
    if (!value_->is_object()) Fail(std::string("expected an object, not ") + Describe(*value_));
    auto const member = value_->get_object().find(json::string_view(name.data(), name.size()));
    if (member == value_->get_object().end()) Fail("the member " + Quote(name) + " is missing");
    auto steps = steps_;
    steps.push_back({std::string_view(member->key().data(), member->key().size()), 0});
    return {*document_, member->value(), (path_.empty() ? "" : path_ + '.') + std::string(name), std::move(steps)};
}

std::vector<JsonDocument::Cursor> JsonDocument::Cursor::GetElements(std::size_t low, std::size_t high) const {
    if (!value_->is_array()) Fail(std::string("expected an array, not ") + Describe(*value_));
    json::array const& array = value_->get_array();
    if (array.size() < low || array.size() > high) {
        std::string const wanted =
            low == high ? std::to_string(low) : std::to_string(low) + " to " + std::to_string(high);
        Fail("expected " + wanted + " elements, not " + std::to_string(array.size()));
    }
    std::vector<Cursor> elements;
    for (std::size_t i = 0; i < array.size(); ++i) {
        auto steps = steps_;
        steps.push_back({{}, i});
        elements.push_back(Cursor(*document_, array[i], path_ + '[' + std::to_string(i) + ']', std::move(steps)));
    }
    return elements;
}

double JsonDocument::Cursor::GetNumber(double low, double high) const {
    if (!value_->is_number()) Fail(std::string("expected a number, not ") + Describe(*value_));
    auto const number = value_->to_number<double>();
    if (!(number >= low && number <= high)) {
        Fail("expected a number from " + Format(low) + " to " + Format(high) + ", not " + Format(number));
    }
    return number;
}

int JsonDocument::Cursor::GetInteger(int low, int high) const {
    double const number = GetNumber(low, high);
    if (number != std::floor(number)) Fail("expected a whole number, not " + Format(number));
    return static_cast<int>(number);
}

std::string JsonDocument::Cursor::GetText(std::size_t longest) const {
    if (!value_->is_string()) Fail(std::string("expected a text, not ") + Describe(*value_));
    json::string const& text = value_->get_string();
    if (text.size() > longest) Fail("expected a text of at most " + std::to_string(longest) + " bytes");
    return {text.data(), text.size()};
}

void JsonDocument::Cursor::RequireMembersAmong(std::vector<std::string_view> const& names) const {
    if (!value_->is_object()) Fail(std::string("expected an object, not ") + Describe(*value_));
    for (auto const& member : value_->get_object()) {
        std::string_view const key(member.key().data(), member.key().size());
        if (std::find(names.begin(), names.end(), key) != names.end()) continue;
        std::string known;
        for (std::string_view const name : names) known += (known.empty() ? "" : ", ") + Quote(name);
        GetMember(key).Fail("no such member is known; there are " + known);
    }
}

}  // namespace qel::host::calibration
