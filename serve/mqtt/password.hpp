#pragma once

#include <string>

namespace qel::serve::mqtt {

/// The password for the broker: the first line of the file where one is given, else what the environment has as
/// QEL_MQTT_PASSWORD, empty where it has nothing. Neither is shown to other users by the system, as arguments are.
/// Throws host::UsageError when the file cannot be read, other users can read it, or it holds no password.
std::string ReadPassword(std::string const& file);

}  // namespace qel::serve::mqtt
