#pragma once

#include <functional>
#include <vector>

#include "qel/type/binding.hpp"
#include "stream_spec.hpp"

namespace qel::serve {

/// What streams there are to be, as somebody else knows it.
struct StreamList {
    /// All of them, in their order. Called on any thread.
    std::function<std::vector<StreamSpec>()> get;
    /// Calls the handler after each change of what get tells, on any thread, until the binding is dropped.
    std::function<type::Binding(std::function<void()> handler)> bind;
};

}  // namespace qel::serve
