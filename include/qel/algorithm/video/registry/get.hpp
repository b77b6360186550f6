#pragma once

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/video/registry/info.hpp"
#include "qel/type/registry.hpp"

extern template class QEL_ALGORITHM_EXPORT qel::type::Registry<qel::algorithm::video::registry::Info>;

namespace qel::algorithm::video::registry {

/// The process's one registry of video algorithms, keyed by the identifiers of their type names.
///
/// Made on the first call and destroyed at exit. Callable from any thread.
QEL_ALGORITHM_EXPORT type::Registry<Info>& Get();

}  // namespace qel::algorithm::video::registry
