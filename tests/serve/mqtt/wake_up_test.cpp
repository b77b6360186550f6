#include "mqtt/wake_up.hpp"

#include <array>
#include <thread>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace qel::serve::mqtt {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Longer than any test takes: a wait that ends by its time alone is told from one that something ended.
constexpr auto Patience = 20s;

/// Two sockets that are connected with each other.
struct Sockets {
    Sockets() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()), 0); }
    ~Sockets() {
        for (int const end : ends) close(end);
    }
    std::array<int, 2> ends{-1, -1};
};

bool IsAwake(WakeUp const& wakeUp) {
    pollfd watched{wakeUp.GetDescriptor(), POLLIN, 0};
    return poll(&watched, 1, 0) == 1;
}

bool Ends(WakeUp const& wakeUp, int socket) {
    auto const start = Clock::now();
    auto const ready = wakeUp.Wait(socket, false, Patience);
    EXPECT_FALSE(ready.readable || ready.writable);
    return Clock::now() - start < Patience;
}

TEST(WakeUp, EndsTheNextWaitOnceHoweverOftenItWasCalled) {
    WakeUp const wakeUp;
    Sockets const sockets;
    for (int const socket : {-1, sockets.ends[0]}) {
        EXPECT_FALSE(IsAwake(wakeUp));
        for (int i = 0; i < 3; ++i) wakeUp.Call();
        EXPECT_TRUE(IsAwake(wakeUp));
        EXPECT_TRUE(Ends(wakeUp, socket));
        EXPECT_FALSE(IsAwake(wakeUp));
    }
}

TEST(WakeUp, EndsTheWaitOfAnotherThread) {
    WakeUp const wakeUp;
    Sockets const sockets;
    for (int i = 0; i < 50; ++i) {
        std::thread caller([&] { wakeUp.Call(); });
        bool const ended = Ends(wakeUp, i % 2 == 0 ? -1 : sockets.ends[0]);
        caller.join();
        ASSERT_TRUE(ended) << i;
    }
}

TEST(WakeUp, TellsWhatTheSocketIsReadyFor) {
    WakeUp const wakeUp;
    Sockets const sockets;
    auto const wait = [&](bool toWrite) { return wakeUp.Wait(sockets.ends[0], toWrite, toWrite ? Patience : 0s); };
    EXPECT_FALSE(wait(false).readable);
    EXPECT_TRUE(wait(true).writable);
    EXPECT_FALSE(wait(true).readable);
    ASSERT_EQ(write(sockets.ends[1], "x", 1), 1);
    auto const both = wait(true);
    EXPECT_TRUE(both.readable && both.writable);
    EXPECT_TRUE(wait(false).readable);
    EXPECT_FALSE(wait(false).writable) << "nobody asked";
}

TEST(WakeUp, TellsOfTheSocketAlsoWhereItWasCalled) {
    WakeUp const wakeUp;
    Sockets const sockets;
    ASSERT_EQ(write(sockets.ends[1], "x", 1), 1);
    wakeUp.Call();
    EXPECT_TRUE(wakeUp.Wait(sockets.ends[0], false, Patience).readable);
    EXPECT_FALSE(IsAwake(wakeUp));
}

TEST(WakeUp, TellsThatTheOtherEndHasGone) {
    WakeUp const wakeUp;
    Sockets sockets;
    shutdown(sockets.ends[1], SHUT_RDWR);
    EXPECT_TRUE(wakeUp.Wait(sockets.ends[0], false, Patience).readable) << "reading tells the rest";
}

TEST(WakeUp, WaitsNoLongerThanItIsTold) {
    WakeUp const wakeUp;
    auto const start = Clock::now();
    wakeUp.Wait(-1, false, 30ms);
    EXPECT_GE(Clock::now() - start, 30ms);
    for (auto const longest : {0ms, -1ms, std::chrono::milliseconds::min()}) wakeUp.Wait(-1, false, longest);
}

}  // namespace
}  // namespace qel::serve::mqtt
