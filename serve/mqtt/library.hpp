#pragma once

#include <mosquitto.h>

namespace qel::serve::mqtt {

/// Begins to use the library of MQTT, which has to be told; as often as anybody likes. Throws host::Error.
void UseLibrary();

/// Throws what a result of the library stands for: std::bad_alloc or host::Error; nothing for a success.
void Check(int result);

/// A list of MQTT 5 properties.
class Properties {
public:
    Properties() = default;
    Properties(Properties const&) = delete;
    Properties& operator=(Properties const&) = delete;
    ~Properties();

    /// What the library's functions add to.
    mosquitto_property** GetSlot() { return &list_; }
    mosquitto_property const* Get() const { return list_; }

private:
    mosquitto_property* list_ = nullptr;
};

}  // namespace qel::serve::mqtt
