#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qel/property/binder.hpp"
#include "qel/property/export.hpp"
#include "qel/property/property.hpp"
#include "qel/property/schema.hpp"

namespace qel::property {

/// The properties of one owner, reached by name.
///
/// Shares the owner and keeps it alive; properties and their ties to nodes end before it is released. Movable; a
/// moved-from object has none. References to properties, which serve any thread, stay good when the object moves.
class QEL_PROPERTY_EXPORT Properties {
public:
    /// owner: may be null, then no property can be read or written. Throws std::invalid_argument when two schemas have
    /// one name.
    Properties(std::shared_ptr<void> owner, std::vector<Schema> schemas);
    /// The same with each property tied to the node that the binder finds for it, where there is one; see Property.
    Properties(Binder& binder, std::shared_ptr<void> owner, std::vector<Schema> schemas);
    Properties(Properties&& other) noexcept;
    Properties& operator=(Properties other) noexcept;
    ~Properties();

    /// Whether there is an owner.
    explicit operator bool() const noexcept;
    /// Whether both have properties of the same descriptions in the same order; owners and values are not compared.
    bool operator==(Properties const& other) const;

    /// The property of a name; throws std::out_of_range, with the names there are, for any other.
    Property& operator[](std::string const& name) const;
    /// All properties in the order of the schemas.
    std::vector<std::reference_wrapper<Property>> GetAll() const;

    friend void swap(Properties& left, Properties& right) noexcept { left.impl_.swap(right.impl_); }

private:
    struct Impl;

    Properties(Binder* binder, std::shared_ptr<void> owner, std::vector<Schema> schemas);

    std::unique_ptr<Impl> impl_;
};

void swap(Properties& left, Properties& right) noexcept;

}  // namespace qel::property
