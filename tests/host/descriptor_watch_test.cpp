#include "descriptor_watch.hpp"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/info/state_classifier.hpp"
#include "qel/algorithm/info_builder.hpp"
#include "qel/configuration/node/vector.hpp"
#include "runtime.hpp"

namespace qel::host {
namespace {

namespace info = algorithm::info;
namespace model = inference::model;
using model::BuildingStatus;
using model::LoadingStatus;
using testing::ElementsAre;
using Strings = std::vector<std::string>;

constexpr model::State Building{LoadingStatus::Loading, BuildingStatus::Building},
    Loaded{LoadingStatus::Loaded, BuildingStatus::Ended}, Failed{LoadingStatus::Failed, BuildingStatus::Ended};

struct ReportingManager : inference::backend::Manager {
    using Manager::ReportModelState;
};

class DescriptorWatchTest : public testing::Test {
protected:
    void Publish(std::string const& name) {
        algorithm::InfoBuilder::Register(
            *manager_, std::make_shared<info::StateClassifier>(runtime_.GetRoot(), name, "", Strings{name + "_model"}));
    }
    void Report(std::string const& name, model::State state) { manager_->ReportModelState(name + "_model", state); }

    /// The changes that wait, as "path=value".
    static Strings Take(DescriptorWatch& watch) {
        Strings lines;
        while (auto const change = watch.Next(std::chrono::milliseconds(0))) {
            lines.push_back(change->path + "=" + boost::json::serialize(change->value));
        }
        return lines;
    }

    ReportingManager* manager_ = new ReportingManager;
    Runtime runtime_{std::unique_ptr<inference::backend::Manager>(manager_)};
};

TEST_F(DescriptorWatchTest, BeginsWithWhatIsPublishedInTheOrderOfNames) {
    Publish("b");
    Publish("a");
    Report("b", Failed);
    DescriptorWatch watch(runtime_.GetDescriptors());
    EXPECT_EQ(boost::json::serialize(watch.GetStart()),
              R"({"a":{"typename":"qel.algorithm.type.StateClassifier","version":"","model_status":"unloaded"},)"
              R"("b":{"typename":"qel.algorithm.type.StateClassifier","version":"","model_status":"failed"}})");
    EXPECT_THAT(Take(watch), ElementsAre());
}

TEST_F(DescriptorWatchTest, TellsOfClassesThatAreReplaced) {
    algorithm::InfoBuilder::Register(
        *manager_, std::make_shared<info::ObjectClassifier>(runtime_.GetRoot(), "a", "", Strings{"a_model"},
                                                            std::set<std::string>{"car", "person"}));
    DescriptorWatch watch(runtime_.GetDescriptors());
    auto const classes =
        configuration::Node::GetPtr<configuration::node::Vector>(runtime_.GetDescriptors().Find("a.classes"));
    classes->Replace({{"", "cat"}});
    classes->Replace({{"", "cat"}});
    EXPECT_THAT(Take(watch), ElementsAre(R"(a.classes=["cat"])"));
}

TEST_F(DescriptorWatchTest, TellsEachChangeOnceAndInOrder) {
    Publish("a");
    Publish("b");
    DescriptorWatch watch(runtime_.GetDescriptors());
    auto const before = std::chrono::system_clock::now();
    Report("a", Building);
    Report("a", Building);
    Report("b", Failed);
    Report("a", Loaded);
    runtime_.GetDescriptors().Find("a")->Fire();
    auto const first = watch.Next(std::chrono::milliseconds(0));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->path, "a.model_status");
    EXPECT_EQ(first->value, "building");
    EXPECT_GE(first->time, before);
    EXPECT_LE(first->time, std::chrono::system_clock::now());
    EXPECT_THAT(Take(watch), ElementsAre("b.model_status=\"failed\"", "a.model_status=\"loaded\""));
    EXPECT_FALSE(watch.Next(std::chrono::milliseconds(1)));
}

TEST_F(DescriptorWatchTest, FollowsADescriptorThatComesLater) {
    DescriptorWatch watch(runtime_.GetDescriptors());
    algorithm::InfoBuilder::Register(
        *manager_, std::make_shared<info::ObjectClassifier>(runtime_.GetRoot(), "late", "", Strings{"late_model"},
                                                            std::set<std::string>{"car"}));
    EXPECT_THAT(Take(watch), ElementsAre(R"(late={"typename":"qel.algorithm.type.ObjectClassifier","version":"",)"
                                         R"("model_status":"unloaded","classes":["car"]})"));
    Report("late", Loaded);
    EXPECT_THAT(Take(watch), ElementsAre("late.model_status=\"loaded\""));
}

TEST_F(DescriptorWatchTest, LosesNothingOfWhatSeveralThreadsReport) {
    Publish("a");
    Publish("b");
    DescriptorWatch watch(runtime_.GetDescriptors());
    auto const reload = [this](char const* name) {
        for (int i = 0; i < 500; ++i) {
            Report(name, Building);
            Report(name, i % 2 == 0 ? Loaded : Failed);
        }
    };
    std::thread one(reload, "a"), two(reload, "b");
    std::map<std::string, Strings> told;
    while (told["a.model_status"].size() + told["b.model_status"].size() < 2000) {
        auto const change = watch.Next(std::chrono::minutes(1));
        ASSERT_TRUE(change) << told["a.model_status"].size() << ", " << told["b.model_status"].size();
        told[change->path].push_back(boost::json::value_to<std::string>(change->value));
    }
    one.join();
    two.join();
    EXPECT_THAT(Take(watch), ElementsAre());
    for (auto const& [path, values] : told) {
        ASSERT_EQ(values.size(), 1000U) << path;
        for (std::size_t i = 0; i < values.size(); ++i) {
            EXPECT_EQ(values[i], i % 2 == 0 ? "building" : i % 4 == 1 ? "loaded" : "failed") << path << " " << i;
        }
    }
}

TEST_F(DescriptorWatchTest, EndsWhileChangesCome) {
    Publish("a");
    std::atomic<bool> done = false;
    std::thread reporter([&] {
        while (!done) {
            Report("a", Building);
            Report("a", Loaded);
        }
    });
    for (int i = 0; i < 50; ++i) {
        DescriptorWatch watch(runtime_.GetDescriptors());
        EXPECT_EQ(watch.GetStart().size(), 1U);
        (void)watch.Next(std::chrono::milliseconds(1));
    }
    done = true;
    reporter.join();
}

}  // namespace
}  // namespace qel::host
