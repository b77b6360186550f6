#pragma once

#include <functional>

#include "qel/type/export.hpp"

namespace qel::type {

/// Keeps a link alive, such as the one from a configuration node to a handler; dropping it ends the link.
///
/// Movable, not copyable. What made the binding says from where it may be dropped. One thread at a time.
class [[nodiscard]] Binding {
public:
    /// An empty binding: it keeps nothing.
    Binding() noexcept = default;
    /// A binding that calls release exactly once, when it is dropped; release must not throw.
    QEL_TYPE_EXPORT explicit Binding(std::function<void()> release) noexcept;
    QEL_TYPE_EXPORT Binding(Binding&& other) noexcept;
    QEL_TYPE_EXPORT Binding& operator=(Binding&& other) noexcept;
    Binding(Binding const&) = delete;
    Binding& operator=(Binding const&) = delete;
    QEL_TYPE_EXPORT ~Binding();

    /// Ends the link now; an empty binding is left as it is.
    QEL_TYPE_EXPORT void Release() noexcept;

    /// Whether the binding keeps a link.
    explicit operator bool() const noexcept { return static_cast<bool>(release_); }

    friend void swap(Binding& left, Binding& right) noexcept { left.release_.swap(right.release_); }

private:
    std::function<void()> release_;
};

}  // namespace qel::type
