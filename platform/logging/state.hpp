#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "qel/logging/level.hpp"
#include "qel/logging/name.hpp"
#include "qel/logging/sink.hpp"
#include "rules.hpp"

namespace qel::logging {

/// What all loggers of one name share.
struct Channel {
    std::string name;
    std::atomic<Level> threshold;
};

/// The logging of the process: the channels with their thresholds, and the sinks.
class State {
public:
    /// Never destroyed: static objects may still log while they are.
    static State& Get();

    /// The channel of a name, which is kept for good.
    Channel const& GetChannel(Name const& name);
    void SetRules(Rules rules);

    void AddSink(std::shared_ptr<Sink const> sink);
    /// Returns when the sink is not running on another thread.
    void RemoveSink(std::shared_ptr<Sink const> const& sink);
    /// Hands a line to the sinks, or to the console when there are none.
    void Write(Level level, std::string_view name, std::string_view text);

private:
    using Sinks = std::vector<std::shared_ptr<Sink const>>;

    std::mutex channelsMutex_;
    Rules rules_;
    std::map<std::string, std::unique_ptr<Channel>, std::less<>> channels_;

    // Held while sinks run, so that one may be dropped for good; recursive, for a sink that drops one.
    std::recursive_mutex sinksMutex_;
    Sinks sinks_;
    bool writing_ = false;
};

}  // namespace qel::logging
