#pragma once

#include <atomic>
#include <thread>

#include "descriptor_watch.hpp"
#include "event_bus.hpp"
#include "qel/configuration/node/map.hpp"

namespace qel::serve {

/// Tells a bus what algorithms publish from now on, as events of kind "model": {"path", "value"}, as `qel info --watch`
/// does: "motion.model_status" for a value of a descriptor, "motion" for a descriptor that is new.
class ModelEvents {
public:
    /// descriptors: "algorithms.info"; its nodes are kept alive. bus: outlives the object.
    ModelEvents(configuration::node::Map& descriptors, EventBus& bus);
    ModelEvents(ModelEvents const&) = delete;
    ModelEvents& operator=(ModelEvents const&) = delete;
    ~ModelEvents();

private:
    host::DescriptorWatch watch_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

}  // namespace qel::serve
