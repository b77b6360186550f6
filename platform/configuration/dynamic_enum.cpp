#include "qel/configuration/node/dynamic_enum.hpp"

#include <stdexcept>

#include "tree_lock.hpp"
#include "typed.hpp"

namespace qel::configuration::node {

using detail::TreeLock;

DynamicEnum::DynamicEnum(std::string name, std::set<std::string> choices, std::string defaultValue,
                         std::string description, Options options)
    : Value(type::Name<DynamicEnum>::Value, std::move(name), std::move(description), options,
            object::Make(std::move(defaultValue)), nullptr),
      choices_(std::move(choices)) {
    CheckAllowedLocked(*GetDefault(), GetName());
}

std::shared_ptr<DynamicEnum> DynamicEnum::Make(std::string name, std::set<std::string> choices,
                                               std::string defaultValue, std::string description, Options options) {
    return std::make_shared<DynamicEnum>(std::move(name), std::move(choices), std::move(defaultValue),
                                         std::move(description), options);
}

std::string DynamicEnum::Get() const { return detail::ValueOf<std::string>(*GetValue()); }

std::set<std::string> DynamicEnum::GetChoices() const {
    TreeLock const lock;
    return choices_;
}

void DynamicEnum::SetChoices(std::set<std::string> choices) {
    ObjectPtr dropped;
    TreeLock const lock;
    CheckNotFrozenLocked();
    choices_.swap(choices);
    auto const& staged = GetStagedLocked();
    if (staged && !choices_.contains(detail::ValueOf<std::string>(*staged))) StageLocked(dropped);
}

void DynamicEnum::Stage(std::string value) { StageObject(object::Make(std::move(value))); }

void DynamicEnum::Set(std::string value) { SetObject(object::Make(std::move(value))); }

void DynamicEnum::Schema(cereal::JSONOutputArchive& archive) const {
    detail::WriteJson(archive, "type", "string");
    detail::WriteJson(archive, "default", detail::ValueOf<std::string>(*GetDefault()));
    archive.setNextName("enum");
    archive.startNode();
    archive.makeArray();
    for (std::string const& choice : GetChoices()) detail::WriteJson(archive, choice);
    archive.finishNode();
    WriteAccess(archive);
}

void DynamicEnum::CheckAllowedLocked(object::Object const& value, std::string const& path) const {
    auto const& text = detail::ValueOf<std::string>(value);
    if (choices_.contains(text)) return;
    std::string list;
    for (std::string const& choice : choices_) list += (list.empty() ? "'" : ", '") + choice + '\'';
    throw std::out_of_range(path + ": the value '" + text + "' is not one of the choices " + list);
}

void DynamicEnum::CopyLocked(Value const& other) {
    std::set<std::string> choices = static_cast<DynamicEnum const&>(other).choices_;
    Value::CopyLocked(other);
    choices_.swap(choices);
}

Node::ObjectPtr DynamicEnum::Convert(object::Object const& value) const {
    return detail::ConvertObject<std::string>(value);
}

Node::ObjectPtr DynamicEnum::Read(cereal::JSONInputArchive& archive, std::string const& path) const {
    return detail::ReadObjectOf<std::string>(archive, path);
}

void DynamicEnum::Write(cereal::JSONOutputArchive& archive, object::Object const& value) const {
    detail::WriteJson(archive, detail::ValueOf<std::string>(value));
}

bool DynamicEnum::IsSame(object::Object const& left, object::Object const& right) const noexcept {
    return detail::ValueOf<std::string>(left) == detail::ValueOf<std::string>(right);
}

}  // namespace qel::configuration::node
