#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "qel/configuration/node/value.hpp"
#include "qel/object/primitive.hpp"

namespace qel::configuration::node {

/// A node whose value is a T. Any thread, as every node.
template <object::PrimitiveValue T>
class QEL_CONFIGURATION_EXPORT Primitive final : public Value {
public:
    /// Throws std::out_of_range when the default is not allowed, and std::invalid_argument when the validator is not
    /// one for values of type T.
    Primitive(std::string name, std::string description, T defaultValue, Options options = {},
              Validator validator = {});

    static std::shared_ptr<Primitive> Make(std::string name, std::string description, T defaultValue,
                                           Options options = {}, Validator validator = {});

    /// The current value.
    T Get() const;

    using Value::Set;
    using Value::Stage;
    void Stage(T value);  ///< throws std::out_of_range for a value that is not allowed, as Set and StageData do
    void Set(T value);

    using Node::Schema;
    void Schema(cereal::JSONOutputArchive& archive) const override;

private:
    ObjectPtr Convert(object::Object const& value) const override;
    ObjectPtr Read(cereal::JSONInputArchive& archive, std::string const& path) const override;
    void Write(cereal::JSONOutputArchive& archive, object::Object const& value) const override;
    bool IsSame(object::Object const& left, object::Object const& right) const noexcept override;
    void CheckAllowedLocked(object::Object const& value, std::string const& path) const override;
};

}  // namespace qel::configuration::node

template <>
struct qel::type::Name<qel::configuration::node::Primitive<std::string>> {
    static constexpr char const* Value = "qel.configuration.node.String";
};
template <>
struct qel::type::Name<qel::configuration::node::Primitive<bool>> {
    static constexpr char const* Value = "qel.configuration.node.Bool";
};
template <>
struct qel::type::Name<qel::configuration::node::Primitive<unsigned char>> {
    static constexpr char const* Value = "qel.configuration.node.UInt8";
};
template <>
struct qel::type::Name<qel::configuration::node::Primitive<std::int32_t>> {
    static constexpr char const* Value = "qel.configuration.node.Int32";
};
template <>
struct qel::type::Name<qel::configuration::node::Primitive<std::int64_t>> {
    static constexpr char const* Value = "qel.configuration.node.Int64";
};
template <>
struct qel::type::Name<qel::configuration::node::Primitive<std::uint32_t>> {
    static constexpr char const* Value = "qel.configuration.node.UInt32";
};
template <>
struct qel::type::Name<qel::configuration::node::Primitive<double>> {
    static constexpr char const* Value = "qel.configuration.node.Double";
};

namespace qel::configuration::node {

extern template class Primitive<std::string>;
extern template class Primitive<bool>;
extern template class Primitive<unsigned char>;
extern template class Primitive<std::int32_t>;
extern template class Primitive<std::int64_t>;
extern template class Primitive<std::uint32_t>;
extern template class Primitive<double>;

}  // namespace qel::configuration::node
