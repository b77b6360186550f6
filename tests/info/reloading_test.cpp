// A model that is replaced again and again while it runs and while the tree that tells its state is read.

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "info/tree.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/info_builder.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "support/model_folder.hpp"

namespace qel::algorithm {
namespace {

using configuration::node::DynamicEnum;

/// A model root with one model, which is replaced as a whole.
class Replaceable {
public:
    Replaceable() { Write("m", 0); }

    /// version: what the network answers, and what its label says.
    void Replace(int version) const {
        Write(".next", version);
        auto const next = folder_.GetRoot() / ".next", model = folder_.GetRoot() / "m";
        if (renameat2(AT_FDCWD, next.c_str(), AT_FDCWD, model.c_str(), RENAME_EXCHANGE) != 0) {
            throw std::system_error(errno, std::generic_category(), "cannot exchange folders");
        }
    }
    std::string GetRoot() const { return folder_.GetRoot().string(); }

private:
    void Write(std::string const& name, int version) const {
        folder_.Write(name, {.channels = 1, .weights = {{static_cast<float>(version)}}, .softmax = false});
        folder_.Write(name, "labels.txt", std::to_string(version));
    }

    test::ModelFolder folder_;
};

int HowOften() {
    char const* const wanted = std::getenv("QEL_TEST_RELOADS");  // more often, by hand
    return wanted == nullptr ? 40 : std::atoi(wanted);
}

/// The loops of a test that go on while another thread works.
class Loops {
public:
    ~Loops() { Stop(); }
    template <class Body>
    void Add(Body body) {
        threads_.emplace_back([this, body] {
            while (!stopped_) {
                body();
                ++turns_;
            }
        });
    }
    long Stop() {
        stopped_ = true;
        for (std::thread& thread : threads_) thread.join();
        threads_.clear();
        return turns_;
    }

private:
    std::atomic<bool> stopped_ = false;
    std::atomic<long> turns_ = 0;
    std::vector<std::thread> threads_;
};

TEST(Reloading, LosesNoFrameAndNoStateWhileTheModelRunsAndTheTreeIsRead) {
    Replaceable const models;
    auto const root = Map::Make("root");
    std::mutex mutex;
    Strings reported;
    inference::backend::Manager manager(models.GetRoot());
    ASSERT_TRUE(manager.WaitUntilSettled(test::Patience));
    InfoBuilder::Register(manager, std::make_shared<info::ObjectClassifier>(*root, "colours", "", Strings{"m"},
                                                                            std::set<std::string>{"red"}));
    manager.RegisterModelUpdateCallback("m", [&](State state) {
        std::lock_guard<std::mutex> const lock(mutex);
        reported.push_back(state == Built ? "built" : ToString(state));
    });

    std::atomic<int> settled = 0;
    Loops loops;
    for (int i = 0; i < 2; ++i) {
        loops.Add([&] {
            int const atLeast = settled;
            auto const model = manager.GetModel("m");
            ASSERT_NE(model, nullptr) << "there is always one";
            int const version = std::stoi(model->GetLabels().at(0));
            auto const outputs = model->Run({{2, 1, 8, 8}, std::vector<float>(128, 1)});
            EXPECT_EQ(outputs.at(0).values, std::vector<float>(2, static_cast<float>(version)));
            EXPECT_GE(version, atLeast);
        });
    }
    loops.Add([&] {
        EXPECT_FALSE(configuration::json::Data(*root).empty());
        auto const status = root->Find("algorithms.info.colours.model_status");
        EXPECT_TRUE(status->As<DynamicEnum>().GetChoices().contains(status->As<DynamicEnum>().Get()));
    });
    int const reloads = HowOften();
    for (int version = 1; version <= reloads; ++version) {
        models.Replace(version);
        ASSERT_TRUE(manager.WaitUntilSettled(test::Patience));
        settled = version;
    }
    EXPECT_GT(loops.Stop(), reloads);

    EXPECT_EQ(manager.GetModel("m")->GetLabels(), Strings{std::to_string(reloads)});
    EXPECT_EQ(Node::GetPtr<DynamicEnum>(root->Find("algorithms.info.colours.model_status"))->Get(), "loaded");
    Strings expected{"loaded"};
    for (int i = 0; i < reloads; ++i) expected.insert(expected.end(), {"building", "built", "loaded"});
    EXPECT_EQ(reported, expected);
}

}  // namespace
}  // namespace qel::algorithm
