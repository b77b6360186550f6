#include "http/workers.hpp"

#include <atomic>
#include <future>
#include <memory>

#include <gtest/gtest.h>

namespace qel::serve::http {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST(Workers, DoOneThingAfterTheOther) {
    std::vector<int> done;
    std::promise<void> last;
    Workers workers(1);
    for (int i = 0; i < 100; ++i) {
        workers.Do([&, i] {
            done.push_back(i);
            if (i == 99) last.set_value();
        });
    }
    last.get_future().wait();
    ASSERT_EQ(done.size(), 100U);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(done[static_cast<std::size_t>(i)], i);
}

TEST(Workers, DoSeveralThingsAtATime) {
    std::promise<void> first, second;
    Workers workers(2);
    std::promise<void> both;
    // Each waits for the other.
    workers.Do([&] { first.set_value(), second.get_future().wait(), both.set_value(); });
    workers.Do([&] { first.get_future().wait(), second.set_value(); });
    EXPECT_EQ(both.get_future().wait_for(20s), std::future_status::ready);
}

TEST(Workers, DropWhatIsNotBegunAndFinishWhatIs) {
    std::promise<void> begun, release;
    std::atomic<bool> isFirstDone = false;
    std::atomic<bool> isSecondDone = false;
    auto const held = std::make_shared<int>();
    Workers workers(1);
    workers.Do([&] {
        begun.set_value();
        release.get_future().wait();
        isFirstDone = true;
    });
    workers.Do([&, held] { isSecondDone = true; });
    begun.get_future().wait();
    EXPECT_FALSE(workers.Stop(Clock::now() + 10ms)) << "the first is not done yet";
    EXPECT_EQ(held.use_count(), 1) << "what the second held is let go";
    release.set_value();
    EXPECT_TRUE(workers.Stop());
    EXPECT_TRUE(isFirstDone);
    EXPECT_FALSE(isSecondDone);
    workers.Do([&] { isSecondDone = true; });
    EXPECT_TRUE(workers.Stop(Clock::now()));
    EXPECT_FALSE(isSecondDone);
}

TEST(Workers, LetGoOfWhatAThingHeldBeforeTheyAreFree) {
    // A destructor that stops nothing, but gives the workers something to do, takes their lock.
    struct Last {
        Workers& workers;
        std::promise<void>& done;
        ~Last() {
            workers.Do([&promise = done] { promise.set_value(); });
        }
    };
    std::promise<void> done;
    Workers workers(1);
    workers.Do([last = std::shared_ptr<Last>(new Last{workers, done})] {});
    EXPECT_EQ(done.get_future().wait_for(20s), std::future_status::ready);
}

}  // namespace
}  // namespace qel::serve::http
