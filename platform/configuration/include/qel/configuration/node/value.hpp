#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qel/configuration/node.hpp"
#include "qel/configuration/validator.hpp"

namespace qel::configuration::node {

class Map;

/// A node with one value: its current value, its default (the first current value), perhaps a staged one, and perhaps a
/// validator, each of them a shared constant object.
///
/// Whatever is staged or set is checked first: std::logic_error for a frozen node, object::BadCast for an object of
/// another type (a String is parsed, see object::Parse), std::out_of_range for a value that is not allowed. The
/// read-only option refuses StageData alone. Any thread, as every node.
class QEL_CONFIGURATION_EXPORT Value : public Node {
public:
    /// The current value.
    std::shared_ptr<object::Object const> GetValue() const;
    std::shared_ptr<object::Object const> GetDefault() const;
    /// The value that a commit would make current, or null.
    std::shared_ptr<object::Object const> GetStaged() const;
    /// Null when every value of the type is allowed.
    std::shared_ptr<Validator const> GetValidator() const;

    /// Stages a value, in place of one staged before; it becomes current with Commit.
    void Stage(object::Object const& value);
    /// Makes a value current at once, drops what was staged and, if the value differs from the former one, fires. An
    /// exception of a handler leaves Set when all has been done.
    void Set(object::Object const& value);
    /// Takes over the current, default and staged values and what is allowed from a node of the same type (otherwise
    /// object::BadCast), and fires if the current value changed. Name, description, options and bindings stay.
    void Copy(Value const& other);

    /// Whether the other node is of the same type and its current value is equal.
    bool EqualTo(Value const& other) const;

protected:
    Value(char const* typeName, std::string name, std::string description, Options options, ObjectPtr defaultValue,
          std::shared_ptr<Validator const> validator);

    void StageObject(ObjectPtr value);  ///< of the node's own type; checked against what is allowed
    void SetObject(ObjectPtr value);
    std::shared_ptr<Validator const> const& GetValidatorLocked() const noexcept { return validator_; }
    /// Takes over what a node of the same type holds; the former values are exchanged for them.
    virtual void CopyLocked(Value const& other);

private:
    friend class Map;
    friend class Vector;
    using Batch = std::vector<std::pair<std::shared_ptr<Value>, ObjectPtr>>;

    /// An object of the node's own type of value.
    virtual ObjectPtr Convert(object::Object const& value) const = 0;
    virtual ObjectPtr Read(cereal::JSONInputArchive& archive, std::string const& path) const = 0;
    virtual void Write(cereal::JSONOutputArchive& archive, object::Object const& value) const = 0;
    virtual bool IsSame(object::Object const& left, object::Object const& right) const noexcept = 0;
    /// Throws std::out_of_range when a converted value is not allowed.
    virtual void CheckAllowedLocked(object::Object const& value, std::string const& path) const = 0;

    void ReadData(cereal::JSONInputArchive& archive, Plan& plan) final;
    void WriteData(cereal::JSONOutputArchive& archive, Which which) const final;
    void CheckLocked(object::Object const& value) const final;
    bool IsCurrentLocked(object::Object const& value) const noexcept final;
    void CommitLocked(ObjectPtr& value) noexcept final;

    bool IsEqualLocked(Value const& other) const noexcept;
    /// Sets converted values: all of them, or none when one is refused.
    static void SetAll(Batch batch);

    // Guarded by the lock of the trees.
    ObjectPtr value_;
    ObjectPtr default_;
    std::shared_ptr<Validator const> validator_;
};

}  // namespace qel::configuration::node

template <>
struct qel::type::Name<qel::configuration::node::Value> {
    static constexpr char const* Value = "qel.configuration.node.Value";
};
