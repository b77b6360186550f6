#pragma once

#include <chrono>

namespace qel::serve::mqtt {

/// Lets a thread wait for a socket and for other threads at once.
class WakeUp {
public:
    struct Ready {
        bool readable = false;
        bool writable = false;
    };

    WakeUp();
    WakeUp(WakeUp const&) = delete;
    WakeUp& operator=(WakeUp const&) = delete;
    ~WakeUp();

    /// Ends the wait of now, or else the next one. Any thread.
    void Call() const noexcept;
    /// Waits for Call, for the socket or for the time to pass. socket: -1 for none. Tells what the socket is ready for.
    Ready Wait(int socket, bool toWrite, std::chrono::milliseconds longest) const noexcept;

    /// For somebody else's poll: readable from Call on until a Wait has ended by it.
    int GetDescriptor() const noexcept { return descriptor_; }

private:
    int descriptor_;
};

}  // namespace qel::serve::mqtt
