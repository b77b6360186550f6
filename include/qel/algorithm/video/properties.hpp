#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/video/algorithm.hpp"
#include "qel/property/binder.hpp"
#include "qel/property/properties.hpp"
#include "qel/property/schema.hpp"

namespace qel::algorithm::video {

/// A live algorithm together with its properties, reached by name.
///
/// The schemas of a registered algorithm: `std::vector<property::Schema>(list.begin(), list.end())` of the list that
/// its registry entry gives. Shares the algorithm, which their untyped pointers point to as a video::Algorithm; the
/// properties go before it is released. Movable; a moved-from object throws std::logic_error "Pimpl is null" where
/// nothing else is said. One thread at a time; each property serves any thread.
class QEL_ALGORITHM_EXPORT Properties {
public:
    /// Throws what property::Properties throws; algorithm may be null.
    Properties(std::shared_ptr<Algorithm> algorithm, std::vector<property::Schema> schemas);
    /// The same with the properties tied to the nodes that the binder finds; it is not needed afterwards.
    Properties(std::shared_ptr<Algorithm> algorithm, property::Binder& binder, std::vector<property::Schema> schemas);
    Properties(Properties&& other) noexcept;
    Properties& operator=(Properties other) noexcept;
    ~Properties();

    /// Whether there is an algorithm and its properties can be used; false for a moved-from object.
    explicit operator bool() const noexcept;
    /// Whether the properties are equal and belong to the very same algorithm; moved-from objects are equal.
    bool operator==(Properties const& other) const;

    property::Properties& GetProperties();
    property::Properties const& GetProperties() const;

    /// The property of a name; throws std::out_of_range for one that there is not.
    property::Property& GetProperty(std::string const& name) const;

    /// Throws std::logic_error "Could not dereference null Algorithm pointer" when there is none.
    Algorithm& GetAlgorithm();
    Algorithm const& GetAlgorithm() const;

    /// The algorithm, or null; null as well for a moved-from object.
    std::shared_ptr<Algorithm> GetAlgorithmPtr() const;

    friend void swap(Properties& left, Properties& right) noexcept { left.impl_.swap(right.impl_); }

private:
    struct Impl;

    Impl& Get() const;

    std::unique_ptr<Impl> impl_;
};

void swap(Properties& left, Properties& right) noexcept;

}  // namespace qel::algorithm::video
