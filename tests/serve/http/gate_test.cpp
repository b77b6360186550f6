#include "http/gate.hpp"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/strand.hpp>
#include <gtest/gtest.h>

namespace qel::serve::http {
namespace {

TEST(Gate, CallsOnceForTheKnocksUntilThen) {
    boost::asio::io_context context;
    int calls = 0;
    auto const gate = std::make_shared<Gate>(context.get_executor(), [&] { ++calls; });
    gate->Knock();
    gate->Knock();
    EXPECT_EQ(calls, 0) << "nothing happens on the thread of who knocks";
    context.run();
    EXPECT_EQ(calls, 1);
    gate->Knock();
    context.restart();
    context.run();
    EXPECT_EQ(calls, 2);
}

TEST(Gate, TakesAKnockDuringTheCallAsANewOne) {
    boost::asio::io_context context;
    int calls = 0;
    std::shared_ptr<Gate> gate;
    gate = std::make_shared<Gate>(context.get_executor(), [&] {
        if (++calls < 3) gate->Knock();
    });
    gate->Knock();
    context.run();
    EXPECT_EQ(calls, 3);
}

TEST(Gate, CallsNothingOnceItIsClosed) {
    boost::asio::io_context context;
    int calls = 0;
    auto const gate = std::make_shared<Gate>(context.get_executor(), [&] { ++calls; });
    gate->Knock();
    gate->Close();
    gate->Knock();
    context.run();
    EXPECT_EQ(calls, 0);
}

TEST(Gate, MayOutliveWhatItCallsOn) {
    std::shared_ptr<Gate> gate;
    {
        boost::asio::io_context context;
        gate = std::make_shared<Gate>(boost::asio::make_strand(context), [] { FAIL(); });
        gate->Knock();
        gate->Close();
    }
    gate->Knock();
}

TEST(Gate, IsKnockedAtWhileItCloses) {
    for (int round = 0; round < 200; ++round) {
        boost::asio::io_context context;
        auto const strand = boost::asio::make_strand(context);
        int calls = 0;  // on the strand alone
        bool isClosed = false;
        std::shared_ptr<Gate> gate;
        gate = std::make_shared<Gate>(strand, [&] {
            EXPECT_FALSE(isClosed);
            if (++calls < 5) return;
            isClosed = true;
            gate->Close();
        });
        std::atomic<int> knocking = 2;
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([&] {
                for (int knock = 0; knock < 50; ++knock) gate->Knock();
                --knocking;
            });
        }
        while (knocking > 0) {
            context.restart();
            context.run();
        }
        for (auto& thread : threads) thread.join();
        context.restart();
        context.run();
        EXPECT_LE(calls, 5);
        EXPECT_GE(calls, 1);
    }
}

}  // namespace
}  // namespace qel::serve::http
