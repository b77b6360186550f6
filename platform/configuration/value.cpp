#include "qel/configuration/node/value.hpp"

#include <algorithm>
#include <chrono>

#include "tree_lock.hpp"

namespace qel::configuration::node {

using detail::TreeLock;

Value::Value(char const* typeName, std::string name, std::string description, Options options, ObjectPtr defaultValue,
             std::shared_ptr<Validator const> validator)
    : Node(typeName, std::move(name), std::move(description), options, std::chrono::system_clock::now()),
      value_(defaultValue),
      default_(std::move(defaultValue)),
      validator_(std::move(validator)) {}

std::shared_ptr<object::Object const> Value::GetValue() const {
    TreeLock const lock;
    return value_;
}

std::shared_ptr<object::Object const> Value::GetDefault() const {
    TreeLock const lock;
    return default_;
}

std::shared_ptr<object::Object const> Value::GetStaged() const {
    TreeLock const lock;
    return GetStagedLocked();
}

std::shared_ptr<Validator const> Value::GetValidator() const {
    TreeLock const lock;
    return validator_;
}

void Value::Stage(object::Object const& value) { StageObject(Convert(value)); }

void Value::StageObject(ObjectPtr value) {
    TreeLock const lock;
    CheckLocked(*value);
    StageLocked(value);
}

void Value::Set(object::Object const& value) { SetObject(Convert(value)); }

void Value::SetObject(ObjectPtr value) {
    Batch batch;
    batch.emplace_back(GetPtr<Value>(), std::move(value));
    SetAll(std::move(batch));
}

void Value::SetAll(Batch batch) {
    Nodes changed;
    changed.reserve(batch.size());
    auto const now = std::chrono::system_clock::now();
    {
        TreeLock const lock;
        for (auto const& [node, value] : batch) node->CheckLocked(*value);
        for (auto& [node, value] : batch) {
            ObjectPtr none;
            node->StageLocked(none);
            if (node->IsCurrentLocked(*value)) continue;
            node->CommitLocked(value);
            node->SetTimestampLocked(now);
            if (std::find(changed.begin(), changed.end(), node) == changed.end()) changed.push_back(node);
        }
    }
    FireAll(changed);
}

void Value::Copy(Value const& other) {
    if (GetTypeId() != other.GetTypeId()) throw other.BadCastError(GetTypeName());
    if (this == &other) return;
    bool changed = false;
    Nodes const self{GetPtr()};
    auto const now = std::chrono::system_clock::now();
    {
        TreeLock const lock;
        CheckNotFrozenLocked();
        changed = !IsEqualLocked(other);
        CopyLocked(other);
        if (changed) SetTimestampLocked(now);
    }
    if (changed) FireAll(self);
}

void Value::CopyLocked(Value const& other) {
    value_ = other.value_;
    default_ = other.default_;
    validator_ = other.validator_;
    ObjectPtr staged = other.GetStagedLocked();
    StageLocked(staged);
}

bool Value::EqualTo(Value const& other) const {
    TreeLock const lock;
    return IsEqualLocked(other);
}

bool Value::IsEqualLocked(Value const& other) const noexcept {
    return GetTypeId() == other.GetTypeId() && IsSame(*value_, *other.value_);
}

void Value::CheckLocked(object::Object const& value) const {
    CheckNotFrozenLocked();
    CheckAllowedLocked(value, GetPathLocked());
}

bool Value::IsCurrentLocked(object::Object const& value) const noexcept { return IsSame(*value_, value); }

void Value::CommitLocked(ObjectPtr& value) noexcept { value_.swap(value); }

void Value::ReadData(cereal::JSONInputArchive& archive, Plan& plan) {
    std::string const path = GetPath();
    ObjectPtr value = Read(archive, path);
    {
        TreeLock const lock;
        CheckAllowedLocked(*value, path);
    }
    plan.emplace_back(GetPtr(), std::move(value));
}

void Value::WriteData(cereal::JSONOutputArchive& archive, Which which) const {
    Write(archive, which == Which::Current ? *GetValue() : *GetDefault());
}

}  // namespace qel::configuration::node
