#include "qel/logging/sink.hpp"

#include <atomic>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "qel/logging/logger.hpp"

namespace qel::logging {
namespace {

Logger const log(Name("qel.test.Sink"));

Sink CountInto(int& lines) {
    return [&lines](Level, std::string_view, std::string_view) { ++lines; };
}

TEST(BindSink, GivesEveryLineToEverySinkUntilItsBindingIsDropped) {
    int first = 0, second = 0;
    auto const outer = BindSink(CountInto(first));
    {
        auto const inner = BindSink(CountInto(second));
        log.Log(Level::Error, "both");
    }
    log.Log(Level::Error, "one");
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second, 1);
}

TEST(BindSink, IgnoresWhatASinkThrows) {
    int lines = 0;
    auto const throwing = BindSink([](Level, std::string_view, std::string_view) { throw std::runtime_error("full"); });
    auto const counting = BindSink(CountInto(lines));
    log.Log(Level::Error, "line");
    log.Log(Level::Error, "line");
    EXPECT_EQ(lines, 2);
}

TEST(BindSink, LetsASinkDropItselfAndOthers) {
    int own = 0, others = 0;
    std::optional<type::Binding> self, other;
    self = BindSink([&](Level, std::string_view, std::string_view) {
        ++own;
        self.reset();
        other.reset();
    });
    other = BindSink(CountInto(others));
    int rest = 0;
    auto const last = BindSink(CountInto(rest));
    log.Log(Level::Error, "line");
    log.Log(Level::Error, "line");
    EXPECT_EQ(own, 1);
    EXPECT_EQ(others, 0);
    EXPECT_EQ(rest, 2);
}

TEST(BindSink, SendsWhatASinkLogsToTheConsole) {
    int lines = 0;
    auto const binding = BindSink([&](Level, std::string_view, std::string_view) {
        ++lines;
        log.Log(Level::Error, "from inside");
    });
    testing::internal::CaptureStderr();
    log.Log(Level::Error, "line");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("from inside"), std::string::npos);
    EXPECT_EQ(lines, 1);
}

TEST(BindSink, WaitsForACallOnAnotherThreadWhenTheBindingIsDropped) {
    std::atomic<bool> entered = false, left = false;
    auto binding = BindSink([&](Level, std::string_view, std::string_view) {
        entered = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        left = true;
    });
    std::thread thread([] { log.Log(Level::Error, "line"); });
    while (!entered) std::this_thread::yield();
    binding.Release();
    EXPECT_TRUE(left);
    thread.join();
}

}  // namespace
}  // namespace qel::logging
