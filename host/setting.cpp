#include "setting.hpp"

#include <exception>
#include <memory>
#include <stdexcept>

#include "error.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/validator.hpp"
#include "qel/object/parse.hpp"
#include "qel/object/primitive.hpp"
#include "text.hpp"

namespace qel::host {
namespace {

namespace node = configuration::node;

void ListBelow(node::Map const& map, std::string const& prefix, std::vector<std::string>& names) {
    for (auto const& child : map.GetChildren()) {
        std::string const name = prefix + child->GetName();
        if (child->Is<node::Value>()) names.push_back(name);
        if (child->Is<node::Map>()) ListBelow(child->As<node::Map>(), name + ".", names);
    }
}

[[noreturn]] void RefuseName(Setting const& setting, node::Map const& map, std::string const& owner) {
    std::vector<std::string> const names = ListValues(map);
    if (names.empty()) throw UsageError("unknown property '" + setting.name + "': " + owner + " has no properties");
    throw UsageError("unknown property '" + setting.name + "' of " + owner + "; did you mean '" +
                     FindNearest(setting.name, names) + "'? (known: " + Join(names) + ")");
}

/// Throws std::out_of_range, with the range of the property, for a number beyond it that its type may not even hold.
void CheckRange(node::Value const& value, std::string const& text) {
    auto const validator = value.GetValidator();
    if (!validator || validator->GetPattern()) return;
    double number = 0;
    try {
        number = object::Parse<double>(text);
    } catch (std::invalid_argument const&) {
        return;  // the node says what it cannot read
    }
    validator->Check(number, value.GetPath());
}

void ApplyOne(Setting const& setting, node::Map& map, std::string const& owner) {
    auto const found = map.Find(setting.name);
    if (!found || !found->Is<node::Value>()) RefuseName(setting, map, owner);
    try {
        CheckRange(found->As<node::Value>(), setting.value);
        // Small numbers are read leniently by their nodes; a person who mistypes wants to be told.
        if (found->Is<node::Primitive<unsigned char>>()) (void)object::Parse<std::int64_t>(setting.value);
        configuration::Node::GetPtr<node::Value>(found)->Set(*object::Make(setting.value));
    } catch (std::exception const& error) {
        throw UsageError("cannot set '" + setting.name + "' to '" + setting.value + "': " + error.what());
    }
}

}  // namespace

Setting ParseSetting(std::string_view text) {
    std::size_t const sign = text.find('=');
    if (sign == std::string_view::npos || sign == 0) {
        throw UsageError("'" + std::string(text) + "' is no setting; write name=value");
    }
    return {std::string(text.substr(0, sign)), std::string(text.substr(sign + 1))};
}

std::vector<std::string> ListValues(node::Map const& map) {
    std::vector<std::string> names;
    ListBelow(map, "", names);
    return names;
}

void Apply(std::vector<Setting> const& settings, node::Map& map, std::string const& owner) {
    for (Setting const& setting : settings) ApplyOne(setting, map, owner);
}

}  // namespace qel::host
