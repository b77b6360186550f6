#include "runtime.hpp"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogue.hpp"
#include "configured_algorithm.hpp"
#include "error.hpp"
#include "qel/algorithm/info/state_classifier.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/algorithm/video/registry/publish.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/vector.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::host {
namespace {

namespace registry = algorithm::video::registry;
using algorithm::info::StateClassifier;
using configuration::Node;
using inference::backend::Manager;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr char const* DoorName = "test.runtime.Door";
constexpr char const* OtherDoorName = "test.another.Door";
constexpr char const* InfoName = "test.runtime.Info";
constexpr char const* MuteName = "test.runtime.Mute";
constexpr char const* TwistedName = "test.runtime.Twisted";

class Door final : public algorithm::video::passthrough::Algorithm {
public:
    Door() : Algorithm(hash::MurmurThree32(DoorName), {media::ColourFormat::Grey8}) {}
    void SetWidth(double) {}
    void Process(media::video::FrameBase<void const> const&, algorithm::video::Result&) override {}
};

std::vector<configuration::Property> const& Properties() {
    static std::vector<configuration::Property> const properties = {
        registry::MakeProperty<Door>("width", "in metres", 0.9, &Door::SetWidth)};
    return properties;
}

/// Describes a classifier of states with that name, which follows one model.
registry::Describe Describe(std::string name) {
    return [name](Node& root) {
        return std::make_shared<StateClassifier>(root, name, "", std::vector<std::string>{name + "_model"});
    };
}

std::shared_ptr<algorithm::info::Base> Fail(Node&) { throw std::runtime_error("no words for it"); }

bool Register(char const* name, registry::Info::CreateNodes nodes) {
    return registry::Register({hash::MurmurThree32(name), name, [](Manager&) { return std::make_shared<Door>(); },
                               Properties, std::move(nodes)});
}

[[maybe_unused]] bool const Registered =
    Register(DoorName, registry::CreateNodes(Properties, Describe("door"))) &&
    Register(OtherDoorName, registry::CreateNodes(Properties, Describe("other_door"))) &&
    Register(InfoName, registry::CreateNodes(Properties)) &&
    Register(MuteName, registry::CreateNodes(Properties, Fail)) &&
    Register(TwistedName, [](Manager&, std::shared_ptr<Node>) { throw std::runtime_error("no room"); });

class RuntimeTest : public testing::Test {
protected:
    std::shared_ptr<configuration::node::Map> Configure(char const* name) {
        auto const map = registry::Get().GetMap();
        return runtime_.MakeConfiguration(map->at(hash::MurmurThree32(name)));
    }

    /// Reports states of models.
    struct ReportingManager : Manager {
        using Manager::ReportModelState;
        void RegisterModelUpdateCallback(std::string_view name, ModelUpdateCallback callback) override {
            ++callbacks;
            Manager::RegisterModelUpdateCallback(name, std::move(callback));
        }
        int callbacks = 0;
    };

    ReportingManager* manager_ = new ReportingManager;
    std::vector<std::string> warnings_;
    Runtime runtime_{std::unique_ptr<Manager>(manager_),
                     [this](std::string const& warning) { warnings_.push_back(warning); }};
};

TEST_F(RuntimeTest, HoldsTheConfigurationOfAnAlgorithmAndWhatItPublishesInOneTree) {
    EXPECT_EQ(configuration::json::Data(runtime_.GetRoot()), R"({"algorithms": {"info": {}}})");
    auto const map = Configure(DoorName);
    EXPECT_EQ(map->GetPath(), "algorithms.Door");
    EXPECT_EQ(map->GetDescription(), "Properties of test.runtime.Door");
    EXPECT_EQ(configuration::json::Data(runtime_.GetRoot()),
              R"({"algorithms": {"info": {"door": {"typename": "qel.algorithm.type.StateClassifier","version": "",)"
              R"("model_status": "unloaded"}},"Door": {"width": 0.9}}})");
    EXPECT_EQ(&runtime_.GetDescriptors(), runtime_.GetRoot().Find("algorithms.info").get());
    EXPECT_THAT(warnings_, ElementsAre());
}

TEST_F(RuntimeTest, ShowsWhatTheManagerReports) {
    Configure(DoorName);
    manager_->ReportModelState("door_model",
                               {inference::model::LoadingStatus::Failed, inference::model::BuildingStatus::Ended});
    EXPECT_THAT(configuration::json::Data(runtime_.GetDescriptors()), HasSubstr(R"("model_status": "failed")"));
}

TEST_F(RuntimeTest, HasOneConfigurationForAnAlgorithmThatIsMadeTwice) {
    auto const map = Configure(DoorName);
    map->Set("width", 2.0);
    EXPECT_EQ(Configure(DoorName), map);
    EXPECT_EQ(configuration::json::Data(*map), R"({"width": 2.0})");
    EXPECT_EQ(manager_->callbacks, 1);
    EXPECT_THAT(warnings_, ElementsAre());
    ConfiguredAlgorithm one(runtime_, hash::MurmurThree32(DoorName), {}), two(runtime_, hash::MurmurThree32(DoorName));
    EXPECT_EQ(&one.GetConfiguration(), &two.GetConfiguration());
}

TEST_F(RuntimeTest, GivesAnAlgorithmItsWholeNameWhereTheLastPartIsTaken) {
    Configure(DoorName);
    auto const other = Configure(OtherDoorName);
    EXPECT_EQ(other->GetName(), "test.another.Door");
    EXPECT_EQ(runtime_.GetRoot().Find("algorithms.test.another.Door"), other);
    EXPECT_NE(runtime_.GetDescriptors().Find("other_door"), nullptr);
    // "algorithms.info" is where descriptors stand; the names of nodes keep capitals apart.
    EXPECT_EQ(Configure(InfoName)->GetName(), "Info");
}

TEST_F(RuntimeTest, WarnsOfADescriptorThatCannotBePublishedAndGoesOn) {
    auto const map = Configure(MuteName);
    EXPECT_EQ(configuration::json::Data(*map), R"({"width": 0.9})");
    ASSERT_EQ(warnings_.size(), 1U);
    EXPECT_THAT(warnings_[0], EndsWith("qel_host_test: test.runtime.Mute: cannot publish its descriptor: "
                                       "no words for it"));
    ConfiguredAlgorithm const algorithm(runtime_, hash::MurmurThree32(MuteName), {});
    EXPECT_NE(algorithm.GetAlgorithm(), nullptr);
}

TEST_F(RuntimeTest, MakesTheConfigurationsOfAllAndWarnsOfThoseThatFail) {
    runtime_.MakeConfigurations();
    EXPECT_NE(runtime_.GetDescriptors().Find("door"), nullptr);
    EXPECT_NE(runtime_.GetDescriptors().Find("other_door"), nullptr);
    EXPECT_THAT(warnings_,
                testing::UnorderedElementsAre(
                    EndsWith("qel_host_test: test.runtime.Mute: cannot publish its descriptor: no words for it"),
                    EndsWith("qel_host_test: test.runtime.Twisted: no room")));
}

TEST_F(RuntimeTest, MakesNodesOfTheirOwnForWhoeverIsToBeSetApart) {
    EXPECT_EQ(runtime_.FindConfiguration(hash::MurmurThree32(DoorName)), nullptr);
    EXPECT_EQ(test::MessageOf<Error>([&] { runtime_.MakeOwnConfiguration(hash::MurmurThree32(DoorName)); }),
              "there is no configuration of such an algorithm");
    auto const common = Configure(DoorName);
    common->Set("width", 2.0);
    EXPECT_EQ(runtime_.FindConfiguration(hash::MurmurThree32(DoorName)), common);
    auto const own = runtime_.MakeOwnConfiguration(hash::MurmurThree32(DoorName));
    EXPECT_EQ(own->GetName(), "Door");
    EXPECT_EQ(own->GetParent(), nullptr);
    EXPECT_EQ(configuration::json::Data(*own), R"({"width": 0.9})");
    EXPECT_EQ(configuration::json::Schema(*own), configuration::json::Schema(*common));
    EXPECT_NE(own, runtime_.MakeOwnConfiguration(hash::MurmurThree32(DoorName)));
    EXPECT_EQ(manager_->callbacks, 1);
    EXPECT_THAT(warnings_, ElementsAre());
}

TEST_F(RuntimeTest, PublishesNothingForAListOfAlgorithms) {
    auto const descriptions = DescribeAlgorithms(runtime_);
    auto const find = [&](std::string const& name) {
        return *std::find_if(descriptions.begin(), descriptions.end(),
                             [&](auto const& d) { return d.typeName == name; });
    };
    EXPECT_EQ(find(DoorName).properties.size(), 1U);
    EXPECT_EQ(find(MuteName).problem, "");
    EXPECT_EQ(find(TwistedName).problem, "no room");
    EXPECT_EQ(runtime_.GetDescriptors().Find("door"), nullptr);
}

TEST_F(RuntimeTest, IsReadWhileModelsAreLoadedAThousandTimes) {
    using inference::model::BuildingStatus;
    using inference::model::LoadingStatus;
    using inference::model::State;
    Configure(DoorName);
    Configure(OtherDoorName);
    auto const status = runtime_.GetRoot().Find("algorithms.info.door.model_status");
    std::atomic<unsigned int> fired = 0;
    std::string last;
    auto const binding = status->Bind([&](std::shared_ptr<configuration::Event const> const& event) {
        last = event->GetNode().As<configuration::node::DynamicEnum>().Get();
        ++fired;
    });
    auto const reload = [this](char const* model) {
        for (int i = 0; i < 1000; ++i) {
            manager_->ReportModelState(model, {LoadingStatus::Loading, BuildingStatus::Building});
            manager_->ReportModelState(model, {LoadingStatus::Loading, BuildingStatus::Built});
            manager_->ReportModelState(model, {LoadingStatus::Loaded, BuildingStatus::Ended});
        }
    };
    std::atomic<bool> done = false;
    std::thread reader([&] {
        std::string const before = R"({"door": {"typename": "qel.algorithm.type.StateClassifier","version": "",)";
        while (!done) {
            EXPECT_THAT(configuration::json::Data(runtime_.GetDescriptors()), testing::StartsWith(before));
            std::string const now = status->As<configuration::node::DynamicEnum>().Get();
            EXPECT_TRUE(State::GetAvailableStates().count(now) == 1) << now;
        }
    });
    std::thread one(reload, "door_model"), two(reload, "other_door_model");
    one.join();
    two.join();
    done = true;
    reader.join();
    EXPECT_EQ(fired, 3000U);
    EXPECT_EQ(last, "loaded");
    EXPECT_THAT(configuration::json::Data(runtime_.GetDescriptors()), HasSubstr(R"("other_door": {"typename": )"));
}

TEST(Runtime, RefusesModelsThatAreNoFolder) {
    test::TemporaryDirectory const directory;
    test::WriteFile(directory / "file", "");
    for (std::string const& path : {directory / "missing", directory / "file"}) {
        EXPECT_EQ(test::MessageOf<UsageError>([&] { Runtime runtime(path); }), "'" + path + "' is no folder of models");
    }
    EXPECT_NO_THROW(Runtime(directory.GetPath().string()));
}

TEST(Publish, LeavesAConfigurationThatStandsAloneAsItIs) {
    Manager manager;
    auto const map = configuration::node::Map::Make("Door");
    registry::Get().GetMap()->at(hash::MurmurThree32(DoorName)).CreateConfigNodes(manager, map);
    EXPECT_EQ(configuration::json::Data(*map), R"({"width": 0.9})");
}

TEST(Publish, RefusesANameThatAnotherKindOfAlgorithmHasTaken) {
    Manager manager;
    auto const root = configuration::node::Map::Make("");
    root->Schema({{"own.value", "", std::string("x")}, {"algorithms.info.door.typename", "", std::string("y")}});
    EXPECT_THAT(test::MessageOf<registry::PublishError>(
                    [&] { registry::Publish(manager, *root->Find("own.value"), Describe("door")); }),
                HasSubstr("algorithms.info.door: the name is taken"));
}

TEST(Publish, RefusesARootThatIsNoMapAndADescriptorThatIsMissing) {
    Manager manager;
    auto const vector = configuration::node::Vector::Make("v");
    vector->Add({configuration::node::Change("", "x")});
    EXPECT_THAT(test::MessageOf<registry::PublishError>(
                    [&] { registry::Publish(manager, *vector->Find(0), Describe("door")); }),
                HasSubstr("'qel.configuration.node.Map'"));
    auto const root = configuration::node::Map::Make("");
    root->Schema({{"own", "", std::string("x")}});
    auto const none = [](Node&) { return std::shared_ptr<algorithm::info::Base>(); };
    EXPECT_EQ(test::MessageOf<registry::PublishError>([&] { registry::Publish(manager, *root->Find("own"), none); }),
              "There is no algorithm descriptor to publish");
}

}  // namespace
}  // namespace qel::host
