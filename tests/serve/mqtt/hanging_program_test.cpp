// The program is told to end while an algorithm does not return.
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <thread>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "broker.hpp"
#include "serve/http/client.hpp"
#include "subscriber.hpp"
#include "support/process.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::serve::mqtt {
namespace {

using qel::test::Command;
using qel::test::TemporaryDirectory;
using test::Broker;
using test::Subscriber;
using testing::HasSubstr;

class HangingProgram : public testing::Test {
protected:
    HangingProgram() {
        qel::test::WriteMovingSquare(folder_ / "gate.mkv", {.framesPerSecond = 50});
        qel::test::WriteFile(folder_ / "config.json", R"({"streams": {
            "gate": {"source": "gate.mkv", "loop": true, "algorithms": ["motion"]},
            "door": {"source": "gate.mkv", "loop": true, "algorithms": ["motion", "hanging"]}}})");
    }

    /// Runs the program until it listens and something has been done with its port, and tells it to end.
    qel::test::Outcome Run(unsigned short broker, std::function<void(std::uint16_t)> const& action) const {
        Command command{QEL_TEST_PROGRAM,
                        {"serve", folder_ / "config.json", "--listen", "127.0.0.1:0", "--plugins",
                         QEL_TEST_HANGING_PLUGIN, "--mqtt", "mqtt://127.0.0.1:" + std::to_string(broker)}};
        bool isTold = false;
        command.watch = [&](pid_t process, std::string const& error) {
            constexpr std::string_view Said = "listening on http://127.0.0.1:";
            auto const at = error.find(Said);
            if (isTold || at == std::string::npos || error.find('\n', at) == std::string::npos) return;
            isTold = true;
            action(static_cast<std::uint16_t>(std::stoi(error.substr(at + Said.size()))));
            kill(process, SIGTERM);
        };
        return qel::test::RunProcess(command);
    }

    static std::string Get(std::uint16_t port, std::string const& path) {
        return http::Ask(port, http::MakeRequest("GET", path)).body;
    }

    /// Waits until what is told of a stream is so.
    static void WaitFor(std::uint16_t port, std::string const& stream,
                        std::function<bool(boost::json::value const&)> const& condition) {
        for (int i = 0; i < 6000; ++i) {
            if (condition(boost::json::parse(Get(port, "/api/streams/" + stream)))) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << Get(port, "/api/streams/" + stream);
    }

    TemporaryDirectory const folder_;
};

TEST_F(HangingProgram, EndsAllTheSameSaysWhyAndHasStoredEverything) {
    constexpr unsigned short Nobody = 1;
    auto const outcome = Run(Nobody, [](std::uint16_t port) {
        auto const answer = http::Ask(
            port, http::MakeRequest("PATCH", "/api/config", "Content-Type: application/json\r\n",
                                    R"({"streams": {"gate": {"settings": {"Motion": {"minimum_area": 77}}}}})"));
        EXPECT_EQ(answer.status, 200U) << answer.body;
        WaitFor(port, "gate", [](auto const& status) { return status.at("frames").template to_number<int>() >= 40; });
        WaitFor(port, "door", [](auto const& status) {
            return status.at("problem") == "the algorithm 'hanging' has not returned for more than 15 seconds";
        });
    });
    EXPECT_EQ(outcome.exitCode, 128 + SIGTERM);
    EXPECT_THAT(outcome.error,
                HasSubstr("qel: warning: the stream 'door' has not ended: the algorithm 'hanging' has not returned\n"
                          "qel: warning: ends all the same; what was set and what waits for a broker is stored\n"));
    Broker broker;
    Subscriber const subscriber(broker.GetPort(), "qel/gate/detections");
    auto const next = Run(broker.GetPort(), [&](std::uint16_t port) {
        EXPECT_EQ(Get(port, "/api/config/streams.gate.settings.Motion.minimum_area"), "77");
        auto const lines = subscriber.WaitFor(41);
        ASSERT_GE(lines.size(), 41U);
        for (std::size_t i = 0; i < 40; ++i) {
            ASSERT_EQ(boost::json::parse(lines[i].payload).at("frame").to_number<std::size_t>(), i);
            ASSERT_EQ(lines[i].run, lines[0].run);
        }
    });
    EXPECT_EQ(next.exitCode, 128 + SIGTERM);
}

}  // namespace
}  // namespace qel::serve::mqtt
