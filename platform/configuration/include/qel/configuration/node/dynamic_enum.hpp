#pragma once

#include <memory>
#include <set>
#include <string>

#include "qel/configuration/node/value.hpp"

namespace qel::configuration::node {

/// A text that is one of a set of choices, which may change while the program runs. Any thread, see Node.
class QEL_CONFIGURATION_EXPORT DynamicEnum final : public Value {
public:
    /// Throws std::out_of_range when the default is none of the choices.
    DynamicEnum(std::string name, std::set<std::string> choices, std::string defaultValue, std::string description,
                Options options = {});

    static std::shared_ptr<DynamicEnum> Make(std::string name, std::set<std::string> choices, std::string defaultValue,
                                             std::string description, Options options = {});

    /// The current value.
    std::string Get() const;
    std::set<std::string> GetChoices() const;
    /// Replaces the choices. The default and the current value stay what they are, a staged value that is no choice any
    /// more is dropped. Throws std::logic_error for a frozen node.
    void SetChoices(std::set<std::string> choices);

    using Value::Set;
    using Value::Stage;
    /// Throws std::out_of_range, with the choices, for a value that is none of them; Set and StageData do so too.
    void Stage(std::string value);
    void Set(std::string value);

    using Node::Schema;
    void Schema(cereal::JSONOutputArchive& archive) const override;

private:
    void CopyLocked(Value const& other) override;
    ObjectPtr Convert(object::Object const& value) const override;
    ObjectPtr Read(cereal::JSONInputArchive& archive, std::string const& path) const override;
    void Write(cereal::JSONOutputArchive& archive, object::Object const& value) const override;
    bool IsSame(object::Object const& left, object::Object const& right) const noexcept override;
    void CheckAllowedLocked(object::Object const& value, std::string const& path) const override;

    // Guarded by the lock of the trees.
    std::set<std::string> choices_;
};

}  // namespace qel::configuration::node

template <>
struct qel::type::Name<qel::configuration::node::DynamicEnum> {
    static constexpr char const* Value = "qel.configuration.node.DynamicEnum";
};
