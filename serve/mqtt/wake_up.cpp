#include "mqtt/wake_up.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace qel::serve::mqtt {

WakeUp::WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "cannot make an event");
}

WakeUp::~WakeUp() { close(descriptor_); }

void WakeUp::Call() const noexcept {
    std::uint64_t const one = 1;
    // It fails only where the event was called more often than anybody can count, and is awake then.
    [[maybe_unused]] ssize_t const written = write(descriptor_, &one, sizeof(one));
}

WakeUp::Ready WakeUp::Wait(int socket, bool toWrite, std::chrono::milliseconds longest) const noexcept {
    std::array<pollfd, 2> watched{
        {{descriptor_, POLLIN, 0}, {socket, static_cast<short>(toWrite ? POLLIN | POLLOUT : POLLIN), 0}}};
    auto const milliseconds = std::clamp<std::int64_t>(longest.count(), 0, 1'000'000);
    if (poll(watched.data(), socket < 0 ? 1 : 2, static_cast<int>(milliseconds)) <= 0) return {};
    if (watched[0].revents != 0) {
        std::uint64_t calls = 0;
        [[maybe_unused]] ssize_t const count = read(descriptor_, &calls, sizeof(calls));
    }
    auto const events = watched[1].revents;
    return {(events & (POLLIN | POLLERR | POLLHUP)) != 0, (events & POLLOUT) != 0};
}

}  // namespace qel::serve::mqtt
