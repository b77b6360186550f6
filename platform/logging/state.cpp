#include "state.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "console.hpp"

namespace qel::logging {

State& State::Get() {
    static State* const state = new State;
    return *state;
}

Channel const& State::GetChannel(Name const& name) {
    std::lock_guard<std::mutex> const lock(channelsMutex_);
    auto const found = channels_.find(name.GetText());
    if (found != channels_.end()) return *found->second;
    // Made before it is entered: there is no entry without a channel, whatever fails.
    std::unique_ptr<Channel> channel(new Channel{name.GetText(), rules_.GetThreshold(name.GetText())});
    return *channels_.emplace(name.GetText(), std::move(channel)).first->second;
}

void State::SetRules(Rules rules) {
    std::lock_guard<std::mutex> const lock(channelsMutex_);
    rules_ = std::move(rules);
    for (auto const& [name, channel] : channels_) channel->threshold = rules_.GetThreshold(name);
}

void State::AddSink(std::shared_ptr<Sink const> sink) {
    std::lock_guard<std::recursive_mutex> const lock(sinksMutex_);
    sinks_.push_back(std::move(sink));
}

void State::RemoveSink(std::shared_ptr<Sink const> const& sink) {
    std::lock_guard<std::recursive_mutex> const lock(sinksMutex_);
    std::erase(sinks_, sink);
}

void State::Write(Level level, std::string_view name, std::string_view text) {
    std::lock_guard<std::recursive_mutex> const lock(sinksMutex_);
    if (sinks_.empty() || writing_) return WriteToConsole(level, name, text);
    Sinks const sinks = sinks_;
    writing_ = true;
    for (auto const& sink : sinks) {
        if (std::find(sinks_.begin(), sinks_.end(), sink) == sinks_.end()) continue;  // dropped by one before it
        try {
            (*sink)(level, name, text);
        } catch (...) {
            // A line must not harm what logs it.
        }
    }
    writing_ = false;
}

}  // namespace qel::logging
