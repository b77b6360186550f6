#pragma once

#include "qel/type/flags.hpp"

namespace qel::configuration::node::binding {

/// How Node::Bind binds; each enumerator is a bit position of the option word.
enum class Option : unsigned char {
    /// Call the handler once, at once, before Bind returns, so that it starts with the current value. If that call
    /// throws, no binding remains and the exception leaves Bind. The handler is bound before that call: a node that
    /// another thread fires meanwhile reaches it as well, rather than being missed.
    CallNow = 0,
};

using Options = type::Flags<Option>;  ///< a set of them

}  // namespace qel::configuration::node::binding
