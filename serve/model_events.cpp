#include "model_events.hpp"

#include <chrono>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

namespace qel::serve {
namespace {

/// How often it is looked whether to stop.
constexpr std::chrono::milliseconds Pause{100};

}  // namespace

ModelEvents::ModelEvents(configuration::node::Map& descriptors, EventBus& bus)
    : watch_(descriptors), thread_([this, &bus] {
          while (!stop_) {
              auto const change = watch_.Next(Pause);
              if (!change) continue;
              boost::json::object const data{{"path", change->path}, {"value", change->value}};
              bus.Publish({.kind = "model", .stream = {}, .data = boost::json::serialize(data)});
          }
      }) {}

ModelEvents::~ModelEvents() {
    stop_ = true;
    thread_.join();
}

}  // namespace qel::serve
