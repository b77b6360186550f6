#include "qel/type/binding.hpp"

#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace qel::type {
namespace {

static_assert(!std::is_copy_constructible_v<Binding> && !std::is_copy_assignable_v<Binding>);

TEST(Binding, IsEmptyWithoutAnAction) {
    Binding binding;
    EXPECT_FALSE(binding);
    binding.Release();
    EXPECT_FALSE(Binding(std::function<void()>()));
}

TEST(Binding, RunsItsActionOnceWhenDropped) {
    int calls = 0;
    {
        Binding const binding([&] { ++calls; });
        EXPECT_TRUE(binding);
        EXPECT_EQ(calls, 0);
    }
    EXPECT_EQ(calls, 1);
}

TEST(Binding, RunsItsActionOnceWhenReleasedAndThenDropped) {
    int calls = 0;
    {
        Binding binding([&] { ++calls; });
        binding.Release();
        EXPECT_FALSE(binding);
        EXPECT_EQ(calls, 1);
    }
    EXPECT_EQ(calls, 1);
}

TEST(Binding, MovesItsActionAlongAndLeavesAnEmptySource) {
    int calls = 0;
    Binding source([&] { ++calls; });
    {
        Binding const target(std::move(source));
        EXPECT_FALSE(source);  // NOLINT(bugprone-use-after-move): the state left behind is promised
        EXPECT_TRUE(target);
    }
    EXPECT_EQ(calls, 1);
}

TEST(Binding, EndsTheFormerLinkWhenAssignedTo) {
    int former = 0, latter = 0;
    Binding target([&] { ++former; });
    target = Binding([&] { ++latter; });
    EXPECT_EQ(former, 1);
    EXPECT_EQ(latter, 0);
    target = Binding();
    EXPECT_EQ(latter, 1);
}

TEST(Binding, SurvivesAnActionThatDropsItAgain) {
    int calls = 0;
    Binding binding;
    binding = Binding([&] {
        ++calls;
        binding.Release();
    });
    binding.Release();
    EXPECT_EQ(calls, 1);
}

TEST(Binding, SwapsTheActions) {
    int calls = 0;
    Binding left([&] { ++calls; }), right;
    swap(left, right);
    EXPECT_FALSE(left);
    EXPECT_TRUE(right);
}

}  // namespace
}  // namespace qel::type
