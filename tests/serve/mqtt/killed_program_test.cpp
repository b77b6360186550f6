// The program is killed while it publishes, and started again.
#include <csignal>
#include <functional>
#include <map>
#include <string>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "broker.hpp"
#include "subscriber.hpp"
#include "support/process.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::serve::mqtt {
namespace {

using qel::test::TemporaryDirectory;
using test::Broker;
using test::Received;
using test::Subscriber;

TEST(KilledProgram, IsCalledOfflineAndNoLineThatItWroteIsMissingAfterwards) {
    Broker broker;
    TemporaryDirectory const folder;
    qel::test::WriteMovingSquare(folder / "gate.mkv", {.framesPerSecond = 50});
    qel::test::WriteFile(folder / "config.json",
                         R"({"streams": {"gate": {"source": "gate.mkv", "loop": true, "algorithms": ["motion"]}}})");
    Subscriber const lines(broker.GetPort(), "qel/gate/detections", "lines");
    Subscriber const words(broker.GetPort(), "qel/status", "words");
    std::size_t seen = 0;
    for (std::size_t round = 1; round <= 3; ++round) {
        qel::test::Command command{QEL_TEST_PROGRAM,
                                   {"serve", folder / "config.json", "--listen", "127.0.0.1:0", "--mqtt",
                                    "mqtt://127.0.0.1:" + std::to_string(broker.GetPort())}};
        bool killed = false;
        command.watch = [&](pid_t process, std::string const&) {
            if (killed) return;
            seen = lines.WaitFor(seen + 40).size();
            killed = true;
            kill(process, SIGKILL);
        };
        EXPECT_EQ(qel::test::RunProcess(command).exitCode, -SIGKILL);
        auto const said = words.WaitFor(2 * round);
        ASSERT_EQ(said.size(), 2 * round);
        EXPECT_EQ(said[2 * round - 2].payload, "online");
        EXPECT_EQ(said[2 * round - 1].payload, "offline");
    }
    // Who drops what is not higher than the last number has every line once and in order; a program that is killed may
    // have had a line or more in its spool that comes with the next one.
    std::uint64_t last = 0;
    std::map<std::string, std::uint64_t> highest;
    for (Received const& message : lines.WaitFor(seen)) {
        std::uint64_t const number = std::stoull(message.number);
        if (number <= highest[message.run]) continue;
        highest[message.run] = number;
        ASSERT_EQ(number, last + 1);
        last = number;
    }
    EXPECT_GE(highest.size(), 2U);
    EXPECT_GE(last, 60U);
}

}  // namespace
}  // namespace qel::serve::mqtt
