#include "signal.hpp"

#include <utility>

namespace qel::serve {
namespace {

// An event of a node bears no more than the node; handlers run on the thread that fires, and find the rest here.
thread_local std::vector<std::string> const* firedPaths = nullptr;

class Firing {
public:
    explicit Firing(std::vector<std::string> const& paths) : outer_(std::exchange(firedPaths, &paths)) {}
    Firing(Firing const&) = delete;
    Firing& operator=(Firing const&) = delete;
    ~Firing() { firedPaths = outer_; }

private:
    // A handler may make a change of its own.
    std::vector<std::string> const* outer_;
};

}  // namespace

type::Binding Signal::Bind(Handler handler) {
    return node_->Bind([handler = std::move(handler)](auto const&) { handler(*firedPaths); });
}

void Signal::Fire(std::vector<std::string> const& paths) {
    Firing const firing(paths);
    node_->Fire();
}

}  // namespace qel::serve
