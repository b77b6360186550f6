#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/process.hpp"

namespace qel::test {

/// Does one thing after the other to a running program, each as soon as its time has come.
class Watcher {
public:
    using Condition = std::function<bool(std::string const& error)>;
    using Action = std::function<void(pid_t process)>;

    Watcher& When(Condition condition, Action action) {
        steps_.emplace_back(std::move(condition), std::move(action));
        return *this;
    }

    /// What Command::watch calls.
    void operator()(pid_t process, std::string const& error) {
        if (next_ == steps_.size() || !steps_[next_].first(error)) return;
        steps_[next_++].second(process);
    }

    /// Whether all of it has been done.
    bool IsDone() const noexcept { return next_ == steps_.size(); }

private:
    std::vector<std::pair<Condition, Action>> steps_;
    std::size_t next_ = 0;
};

/// Whether a file has so many lines by now.
Watcher::Condition HasLines(std::string const& path, std::size_t count);
/// Whether a file holds a text by now.
Watcher::Condition HasText(std::string const& path, std::string const& text);
/// Whether the program has said something on its standard error output, so many times.
Watcher::Condition HasSaid(std::string const& text, std::size_t times = 1);

}  // namespace qel::test
