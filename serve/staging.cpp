#include "staging.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include <boost/json.hpp>

#include "json_text.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "text.hpp"

namespace qel::serve {
namespace {

namespace json = boost::json;
namespace node = configuration::node;
using configuration::Node;

/// A value that a document holds, and in which layer; null where none has it.
struct Found {
    json::value const* value = nullptr;
    std::size_t layer = 0;

    bool operator==(Found const& other) const {
        return value == nullptr || other.value == nullptr ? value == other.value : *value == *other.value;
    }
};

Found Find(Staging::Layers const& layers, std::string_view name) {
    for (std::size_t i = 0; i < layers.size(); ++i) {
        auto const* const value = layers[i] == nullptr ? nullptr : layers[i]->if_contains(name);
        if (value != nullptr) return {value, i};
    }
    return {};
}

char const* FindAccessFault(Node const& node) {
    // A gauge is what its schema says: a number that the program reports.
    if (node.GetOptions().Test(node::Option::ReadOnly) || node.GetOptions().Test(node::Option::Gauge)) {
        return "is read only";
    }
    if (node.GetOptions().Test(node::Option::Transient)) return "is made by the program at each start and is not kept";
    return nullptr;
}

/// The text that json::Stage takes: the value as the one member of an object.
std::string Wrap(Node const& node, json::value value) {
    // "5.0" is a whole number in JSON, whatever it looks like.
    constexpr double Largest = 9007199254740992;
    if (auto const* const number = value.if_double(); number != nullptr && !node.Is<node::Primitive<double>>() &&
                                                      std::trunc(*number) == *number && std::abs(*number) <= Largest) {
        value = static_cast<std::int64_t>(*number);
    }
    json::object wrapped;
    wrapped.emplace(node.GetName(), std::move(value));
    return host::SerializeJson(wrapped);
}

/// Throws std::out_of_range, with the range of the node, for a number beyond it that its type may not even hold.
void CheckRange(Node const& node, json::value const& value) {
    if (!value.is_number() || !node.Is<node::Value>()) return;
    auto const validator = node.As<node::Value>().GetValidator();
    if (validator && !validator->GetPattern()) validator->Check(value.to_number<double>(), node.GetPath());
}

/// A fault from a message that begins with the path of the node, or of one of its elements.
Fault ToFault(std::string const& message, Node const& node, std::string const& path) {
    std::string const start = node.GetPath();
    std::size_t const colon = message.find(": ", start.size());
    if (!message.starts_with(start) || colon == std::string::npos) return {path, message};
    std::string const element = message.substr(start.size(), colon - start.size());
    if (!element.empty() && element.front() != '[') return {path, message};
    return {path + element, message.substr(colon + 2)};
}

/// What is wrong with a text of a value or of a list of them; empty when nothing is.
std::string FindTextFault(json::value const& value) {
    if (auto const* const list = value.if_array()) {
        for (auto const& element : *list) {
            if (element.is_string() && element.get_string().size() > Staging::MaximumText)
                return FindTextFault(element);
        }
    }
    if (!value.is_string() || value.get_string().size() <= Staging::MaximumText) return {};
    return "is a text of more than " + std::to_string(Staging::MaximumText) + " bytes";
}

std::vector<std::string> ListNames(node::Map const& map) {
    std::vector<std::string> names;
    for (auto const& child : map.GetChildren()) names.push_back(child->GetName());
    return names;
}

std::string ExplainUnknown(std::string_view name, std::vector<std::string> const& names) {
    if (names.empty()) return "there is no such setting, nor any other";
    return "there is no such setting; did you mean '" + host::FindNearest(name, names) +
           "'? (known: " + host::Join(names) + ")";
}

}  // namespace

std::string JoinPath(std::string const& path, std::string_view name) {
    return path.empty() ? std::string(name) : path + "." + std::string(name);
}

std::string DescribeJson(json::value const& value) {
    if (value.is_object()) return "an object";
    if (value.is_array()) return "a list";
    if (value.is_string()) return "the text '" + host::FormatJson(value) + "'";
    return value.is_number() ? "the number " + host::FormatJson(value) : host::FormatJson(value);
}

json::object const* FindObject(json::object const* parent, std::string_view name) {
    auto const* const value = parent == nullptr ? nullptr : parent->if_contains(name);
    return value == nullptr ? nullptr : value->if_object();
}

json::object const* GetObject(json::object const* parent, std::string_view name, std::string const& path,
                              Staging& staging) {
    auto const* const value = parent == nullptr ? nullptr : parent->if_contains(name);
    if (value == nullptr) return nullptr;
    if (!value->is_object()) staging.Refuse(path, "expected an object, found " + DescribeJson(*value));
    return value->if_object();
}

void Staging::StageNew(node::Map& map, std::string const& path, Layers const& now, std::string_view skipped) {
    isNew_ = true;
    Stage(map, path, now, {}, skipped);
    isNew_ = false;
}

void Staging::Stage(node::Map& map, std::string const& path, Layers const& now, Layers const& before,
                    std::string_view skipped) {
    if (now[0] != nullptr) RefuseUnknown(map, path, *now[0]);
    for (auto const& child : map.GetChildren()) {
        std::string const& name = child->GetName();
        if (name == skipped) continue;
        std::string const childPath = JoinPath(path, name);
        if (!child->Is<node::Map>()) {
            StageValue(*child, childPath, now, before);
            continue;
        }
        Layers const below{GetObject(now[0], name, childPath, *this), FindObject(now[1], name)};
        Stage(*Node::GetPtr<node::Map>(child), childPath, below,
              {FindObject(before[0], name), FindObject(before[1], name)});
    }
}

void Staging::RefuseUnknown(node::Map const& map, std::string const& path, json::object const& members) {
    std::vector<std::string> const names = ListNames(map);
    for (auto const& member : members) {
        std::string_view const name = member.key();
        if (std::find(names.begin(), names.end(), name) != names.end()) continue;
        Refuse(JoinPath(path, name), ExplainUnknown(name, names));
    }
}

void Staging::StageValue(Node& node, std::string const& path, Layers const& now, Layers const& before) {
    Found const wanted = Find(now, node.GetName());
    if (char const* const fault = FindAccessFault(node)) {
        if (wanted.value != nullptr && wanted.layer == 0) Refuse(path, fault);
        return;
    }
    if (wanted == Find(before, node.GetName())) return;
    try {
        bool isChanged = false;
        if (wanted.value == nullptr) {
            isChanged = !configuration::json::Stage(node, configuration::json::Defaults(node)).empty();
        } else {
            if (auto fault = FindTextFault(*wanted.value); !fault.empty()) {
                return RefuseIn(wanted.layer, {path, std::move(fault)});
            }
            CheckRange(node, *wanted.value);
            isChanged = !configuration::json::Stage(node, Wrap(node, *wanted.value)).empty();
        }
        if (isChanged && !isNew_) Tell(path);
    } catch (std::bad_alloc const&) {
        throw;  // not the document's fault
    } catch (std::exception const& error) {
        RefuseIn(wanted.layer, ToFault(error.what(), node, path));
    }
}

void Staging::Refuse(std::string path, std::string reason) { RefuseIn(0, {std::move(path), std::move(reason)}); }

void Staging::RefuseIn(std::size_t layer, Fault fault) {
    auto& faults = layer == 0 ? faults_ : inherited_;
    if (faults.size() < MaximumFaults) faults.push_back(std::move(fault));
}

void Staging::Finish() const {
    if (!faults_.empty()) throw Refused(faults_);
    if (!inherited_.empty()) throw Refused(inherited_);
}

}  // namespace qel::serve
