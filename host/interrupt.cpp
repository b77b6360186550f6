#include "interrupt.hpp"

#include <atomic>
#include <csignal>

#include <signal.h>

namespace qel::host {
namespace {

/// Written on whatever thread the system picks for the signal.
std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler must not wait");

extern "C" void TakeNote(int signal) { received = signal; }

}  // namespace

Interrupt::Interrupt() {
    received = 0;
    struct sigaction action {};
    action.sa_handler = TakeNote;
    // Handled once: the next signal of the kind does what it does to any process.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

Interrupt::~Interrupt() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

int Interrupt::GetSignal() const noexcept { return received; }

}  // namespace qel::host
