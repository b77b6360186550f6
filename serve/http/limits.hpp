#pragma once

#include <chrono>
#include <cstddef>

namespace qel::serve::http {

/// What one client may ask of a server; beyond it, it gets a problem or loses its connection, and nobody else notices.
struct Limits {
    /// In bytes, the request line among them.
    std::size_t maxHead = 16U << 10;
    std::size_t maxTarget = 8U << 10;
    std::size_t maxBody = 1U << 20;

    /// Of a server, and of one address other than the loopback ones. Some libraries take no file descriptor past 1024.
    std::size_t maxConnections = 768;
    std::size_t maxConnectionsOfAddress = 256;
    /// Answers without an end, such as events.
    std::size_t maxStreams = 256;

    /// For a whole head and a whole body, however slowly their bytes come.
    std::chrono::milliseconds headTime{10'000};
    std::chrono::milliseconds bodyTime{30'000};
    /// Between two requests.
    std::chrono::milliseconds idleTime{60'000};
    /// For a piece of an answer to be taken, besides a second for each 16 KiB of it.
    std::chrono::milliseconds writeTime{20'000};
    /// For an answer that is made later, such as a picture that is waited for.
    std::chrono::milliseconds answerTime{10'000};
    /// An endless answer without anything to tell is asked for a sign of life so often.
    std::chrono::milliseconds streamPause{15'000};
};

}  // namespace qel::serve::http
