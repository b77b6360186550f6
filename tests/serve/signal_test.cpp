#include "signal.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::serve {
namespace {

using testing::ElementsAre;

TEST(Signal, HandsThePathsToItsHandlersUntilTheyLeave) {
    Signal signal;
    std::vector<std::string> first, second;
    auto const binding = signal.Bind([&](auto const& paths) { first = paths; });
    {
        auto const other = signal.Bind([&](auto const& paths) { second = paths; });
        signal.Fire({"a", "b"});
    }
    signal.Fire({"c"});
    EXPECT_THAT(first, ElementsAre("c"));
    EXPECT_THAT(second, ElementsAre("a", "b"));
}

TEST(Signal, MayBeFiredFromAHandlerOfAnother) {
    Signal outer, inner;
    std::vector<std::string> told;
    auto const innerBinding = inner.Bind([&](auto const& paths) { told.push_back(paths.front()); });
    auto const outerBinding = outer.Bind([&](auto const& paths) {
        inner.Fire({"inner"});
        told.push_back(paths.front());
    });
    outer.Fire({"outer"});
    EXPECT_THAT(told, ElementsAre("inner", "outer"));
}

TEST(Signal, CallsAllAndThrowsTheFirstExceptionOn) {
    Signal signal;
    int calls = 0;
    auto const first = signal.Bind([&](auto const&) { throw std::runtime_error("first"); });
    auto const second = signal.Bind([&](auto const&) { ++calls; });
    EXPECT_THROW(signal.Fire({}), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace qel::serve
