#include <atomic>
#include <thread>

#include <gmock/gmock.h>

#include "qel/configuration/node/primitive.hpp"
#include "store_fixture.hpp"

namespace qel::serve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class StoreBinding : public StoreTest {
protected:
    StoreBinding() { OpenWith(Gate); }

    std::vector<std::string> SetThreshold(int value) {
        return Patch(R"({"algorithms": {"Threshold": {"threshold": )" + std::to_string(value) + "}}}");
    }
};

TEST_F(StoreBinding, TellsOfTheChangedPathsWhenAllIsInEffect) {
    std::vector<std::string> told;
    std::string data, file;
    auto binding = store_->BindChanges([&](std::vector<std::string> const& paths) {
        told = paths;
        data = Data("streams.gate.settings.Threshold.threshold");
        file = test::ReadFile(path_);
    });
    auto const changed = SetThreshold(30);
    EXPECT_EQ(told, changed);
    EXPECT_EQ(data, "30");
    EXPECT_THAT(file, HasSubstr("30"));
    told.clear();
    SetThreshold(30);
    EXPECT_THAT(told, IsEmpty()) << "nothing has changed";
    RefusalOf(R"({"algorithms": {"Threshold": {"threshold": 0}}})");
    EXPECT_THAT(told, IsEmpty());
    binding.Release();
    SetThreshold(31);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(StoreBinding, TellsOfStreamsButNotOfTheirSettings) {
    int told = 0;
    auto const binding = store_->BindStreams([&] { ++told; });
    SetThreshold(30);
    Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 7}}}}})");
    EXPECT_EQ(told, 0);
    int expected = 0;
    for (char const* const patch : {
             R"({"streams": {"door": {"source": "d", "algorithms": ["invert"]}}})",
             R"({"streams": {"door": {"source": "e"}}})",
             R"({"streams": {"door": {"loop": true}}})",
             R"({"streams": {"door": {"enabled": false}}})",
             R"({"streams": {"door": {"calibration": "c"}}})",
             R"({"streams": {"door": {"algorithms": ["fail"]}}})",
             R"({"streams": {"door": null}})",
         }) {
        Patch(patch);
        EXPECT_EQ(told, ++expected) << patch;
    }
}

TEST_F(StoreBinding, FiresTheNodesThatChangedOnceAllAreInEffect) {
    std::vector<std::string> fired;
    std::vector<type::Binding> bindings;
    for (char const* const path : {"algorithms.Threshold.threshold", "algorithms.Threshold.confidence",
                                   "streams.gate.settings.Threshold.threshold", "streams"}) {
        bindings.push_back(runtime_->GetRoot().Find(path)->Bind([this, &fired](auto const& event) {
            fired.push_back(event->GetNode().GetPath(runtime_->GetRoot().GetPtr()) + " " +
                            Data("streams.gate.settings.Threshold.threshold"));
        }));
    }
    SetThreshold(30);
    EXPECT_THAT(fired, UnorderedElementsAre("algorithms.Threshold.threshold 30",
                                            "streams.gate.settings.Threshold.threshold 30"));
    fired.clear();
    Patch(R"({"streams": {"door": {"source": "d", "algorithms": ["invert"]}}})");
    EXPECT_THAT(fired, ElementsAre("streams 30"));
}

TEST_F(StoreBinding, LetsHandlersChangeItAgain) {
    std::vector<std::vector<std::string>> told;
    auto const binding = store_->BindChanges([&](std::vector<std::string> const& paths) {
        if (told.empty()) {
            told.push_back(paths);
            Patch(R"({"streams": {"gate": {"loop": true}}})");
            told.push_back(paths);
        } else {
            told.push_back(paths);
        }
    });
    auto const changed = SetThreshold(30);
    EXPECT_THAT(told, ElementsAre(changed, ElementsAre("streams.gate.loop"), changed));
}

TEST_F(StoreBinding, GoesOnWhenAHandlerFails) {
    int told = 0;
    auto const value = runtime_->GetRoot().Find("algorithms.Threshold.threshold")->Bind([](auto const&) {
        throw std::runtime_error("cannot");
    });
    auto const streams = store_->BindStreams([] { throw std::runtime_error("cannot"); });
    auto const first = store_->BindChanges([](auto const&) { throw std::runtime_error("cannot"); });
    auto const second = store_->BindChanges([&](auto const&) { ++told; });
    testing::internal::CaptureStderr();
    EXPECT_THAT(SetThreshold(30), testing::SizeIs(2));
    Patch(R"({"streams": {"gate": {"loop": true}}})");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("cannot"));
    EXPECT_EQ(told, 2);
    EXPECT_EQ(Data("algorithms.Threshold.threshold"), "30");
}

TEST_F(StoreBinding, IsReadInWholeStatesWhileOthersChangeIt) {
    constexpr int Rounds = 60;
    Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 1, "smallest_area": 1}}}}})");
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            while (!done) {
                auto const data = Parse(Data("streams.gate.settings.Threshold"));
                EXPECT_EQ(data.at("threshold").to_number<int>(), data.at("smallest_area").to_number<int>());
                EXPECT_TRUE(store_->GetSchema(""));
                for (StreamSpec const& stream : store_->GetStreams()) {
                    EXPECT_EQ(stream.settings.size(), stream.algorithms.size()) << stream.id;
                }
                EXPECT_TRUE(store_->GetDocument().contains("streams"));
                EXPECT_THAT(store_->GetProblems(), IsEmpty());
            }
        });
    }
    threads.emplace_back([&] {
        while (!done) {
            std::vector<std::string> paths;
            auto const changes = store_->BindChanges([&paths](auto const& changed) { paths = changed; });
            int told = 0;
            auto const streams = store_->BindStreams([&told] { ++told; });
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> writers;
    writers.emplace_back([&] {
        for (int i = 1; i <= Rounds; ++i) {
            std::string const number = std::to_string(i);
            Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": )" + number +
                  R"(, "smallest_area": )" + number + "}}}}}");
        }
    });
    writers.emplace_back([&] {
        for (int i = 0; i < Rounds / 2; ++i) {
            Patch(R"({"streams": {"door": {"source": "d", "algorithms": ["threshold"]}}})");
            Patch(R"({"streams": {"door": null}, "algorithms": {"Threshold": {"confidence": 0.75}}})");
        }
    });
    for (auto& thread : writers) thread.join();
    done = true;
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), std::to_string(Rounds));
    EXPECT_EQ(store_->GetStreams().size(), 1U);
    auto const data = store_->GetData("");
    Open();
    EXPECT_EQ(store_->GetData(""), data);
}

}  // namespace
}  // namespace qel::serve
