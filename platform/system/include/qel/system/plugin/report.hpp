#pragma once

#include "qel/system/export.hpp"
#include "qel/system/plugin/problem.hpp"

namespace qel::system::plugin {

/// Adds a problem to those that the LoadAll under way on this thread will tell: for code that runs while a plug-in
/// loads, such as a registry. Returns false, and drops the problem, when no LoadAll is under way.
QEL_SYSTEM_EXPORT bool Report(Problem problem) noexcept;

}  // namespace qel::system::plugin
