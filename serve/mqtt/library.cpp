#include "mqtt/library.hpp"

#include <new>
#include <string>

#include "error.hpp"

namespace qel::serve::mqtt {

void UseLibrary() {
    static int const ready = mosquitto_lib_init();
    if (ready != MOSQ_ERR_SUCCESS) throw host::Error("the MQTT library cannot be used");
}

void Check(int result) {
    if (result == MOSQ_ERR_NOMEM) throw std::bad_alloc();
    if (result != MOSQ_ERR_SUCCESS) throw host::Error(std::string("MQTT: ") + mosquitto_strerror(result));
}

Properties::~Properties() { mosquitto_property_free_all(&list_); }

}  // namespace qel::serve::mqtt
