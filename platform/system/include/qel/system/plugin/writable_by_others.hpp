#pragma once

#include "qel/system/export.hpp"

namespace qel::system::plugin {

/// Whether LoadAll and LoadFile take plug-ins that every user of the machine can change or replace: those whose file,
/// or whose folder, all may write (a sticky folder, such as /tmp, protects its files). They are refused unless this is
/// called with true; it holds for the process. Any thread, before plug-ins are loaded.
QEL_SYSTEM_EXPORT void AllowWritableByOthers(bool allow) noexcept;

}  // namespace qel::system::plugin
