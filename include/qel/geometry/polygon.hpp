#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "qel/geometry/point.hpp"

namespace qel::geometry {

/// A closed polygon: an ordered list of corners, the last one joined to the first. One thread at a time.
template <class T>
class Polygon {
public:
    using value_type = Point<T, 2>;
    using iterator = typename std::vector<value_type>::iterator;
    using const_iterator = typename std::vector<value_type>::const_iterator;

    Polygon() = default;
    Polygon(std::initializer_list<value_type> points) : points_(points) {}
    template <class Iterator>
    Polygon(Iterator first, Iterator last) : points_(first, last) {}

    std::size_t size() const noexcept { return points_.size(); }
    bool empty() const noexcept { return points_.empty(); }
    value_type& operator[](std::size_t index) noexcept { return points_[index]; }
    value_type const& operator[](std::size_t index) const noexcept { return points_[index]; }
    void push_back(value_type const& point) { points_.push_back(point); }
    iterator begin() noexcept { return points_.begin(); }
    iterator end() noexcept { return points_.end(); }
    const_iterator begin() const noexcept { return points_.begin(); }
    const_iterator end() const noexcept { return points_.end(); }

    friend bool operator==(Polygon const&, Polygon const&) = default;

private:
    std::vector<value_type> points_;
};

}  // namespace qel::geometry
