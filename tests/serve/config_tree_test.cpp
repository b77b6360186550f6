#include "config_tree.hpp"

#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "read_json.hpp"

namespace qel::serve {
namespace {

using boost::json::object;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

object Parse(std::string const& text) { return ReadJson(text).as_object(); }

constexpr char const* Gate = R"({"streams": {"gate": {"source": "g.avi", "algorithms": ["threshold"]}}})";
constexpr char const* Door = R"({"streams": {"door": {"source": "d.avi", "algorithms": ["threshold"],
                                                      "settings": {"Threshold": {"threshold": 7}}}},
                                 "algorithms": {"Threshold": {"confidence": 0.25}}})";

class ConfigTreeTest : public testing::Test {
protected:
    ConfigTreeTest() { tree_.emplace(runtime_); }

    /// Goes to a document from another one.
    void Change(std::string const& next, std::string const& current = "{}") {
        object const document = Parse(next);
        tree_->Apply(tree_->Prepare(document, Parse(current), document));
        tree_->GetRoot().Fire();
    }
    std::string Data(std::string const& path = {}) {
        auto const node = path.empty() ? runtime_.GetRoot().GetPtr() : runtime_.GetRoot().Find(path);
        return node ? configuration::json::Data(*node) : "none";
    }
    std::shared_ptr<configuration::Node> Find(std::string const& path) { return runtime_.GetRoot().Find(path); }

    host::Runtime runtime_;
    std::optional<ConfigTree> tree_;
};

TEST_F(ConfigTreeTest, HasNoStreamsAtFirstAndTakesThemOutAgainAtItsEnd) {
    EXPECT_EQ(Data("streams"), "{}");
    Change(Door);
    tree_.reset();
    EXPECT_EQ(Find("streams"), nullptr);
    EXPECT_THAT(Data("algorithms.Threshold"), HasSubstr(R"("confidence": 0.25)")) << "stays as it is";
}

TEST_F(ConfigTreeTest, ShowsNothingOfAPlanUntilItIsApplied) {
    Change(Gate);
    std::string const before = Data();
    auto plan = tree_->Prepare(Parse(Door), Parse(Gate), {});
    EXPECT_EQ(Data(), before);
    tree_->Apply(std::move(plan));
    EXPECT_EQ(Find("streams.gate"), nullptr);
    EXPECT_THAT(Data("streams.door.settings.Threshold"), HasSubstr(R"("threshold": 7)"));
    EXPECT_THAT(Data("streams.door.settings.Threshold"), HasSubstr(R"("confidence": 0.25)"));
    EXPECT_THAT(Data("algorithms.Threshold"), HasSubstr(R"("confidence": 0.25)"));
}

TEST_F(ConfigTreeTest, ForgetsAPlanThatIsDiscarded) {
    Change(Gate);
    std::string const before = Data();
    {
        auto const plan =
            tree_->Prepare(Parse(R"({"streams": {"gate": {"source": "other", "algorithms": ["threshold"]}},
                      "algorithms": {"Threshold": {"threshold": 9}}})"),
                           Parse(Gate), {});
        EXPECT_THAT(plan.changed, ElementsAre("algorithms.Threshold.threshold", "streams.gate.source",
                                              "streams.gate.settings.Threshold.threshold"));
        tree_->Discard();
    }
    runtime_.GetRoot().Commit();
    EXPECT_EQ(Data(), before);
}

TEST_F(ConfigTreeTest, LeavesNothingStagedOfADocumentThatIsRefused) {
    Change(Gate);
    std::string const before = Data();
    EXPECT_THROW((void)tree_->Prepare(Parse(R"({"streams": {"gate": {"source": "other", "algorithms": ["threshold"]}},
                                                "algorithms": {"Threshold": {"threshold": 9, "confidence": 5}}})"),
                                      Parse(Gate), {}),
                 Refused);
    runtime_.GetRoot().Commit();
    EXPECT_EQ(Data(), before);
    // And the next document is taken.
    Change(Door, Gate);
    EXPECT_NE(Find("streams.door"), nullptr);
}

TEST_F(ConfigTreeTest, TellsHandlersOfWholeStatesAndOnlyWhenItIsFired) {
    Change(Gate);
    std::vector<std::string> told;
    auto const tell = [&](char const* who) {
        return [this, &told, who](auto const&) {
            told.push_back(std::string(who) +
                           (Find("streams.door") && !Find("streams.gate") ? " sees all" : " sees half"));
        };
    };
    auto const value = Find("algorithms.Threshold.confidence")->Bind(tell("value"));
    auto const streams = Find("streams")->Bind(tell("streams"));
    auto const root = runtime_.GetRoot().Bind(tell("root"));
    tree_->Apply(tree_->Prepare(Parse(Door), Parse(Gate), {}));
    EXPECT_THAT(told, IsEmpty());
    runtime_.GetRoot().Fire();
    // What is below is told before what is above.
    ASSERT_EQ(told.size(), 3U);
    EXPECT_THAT(told, testing::UnorderedElementsAre("value sees all", "streams sees all", "root sees all"));
    EXPECT_EQ(told.back(), "root sees all");
}

TEST_F(ConfigTreeTest, NeverShowsNewNodesWithValuesThatAreNotTheirs) {
    std::string seen;
    auto const binding = Find("streams")->Bind([&](auto const&) { seen = Data("streams.door.source"); });
    tree_->Apply(tree_->Prepare(Parse(Door), {}, {}));
    EXPECT_EQ(Data("streams.door.source"), R"({"source": "d.avi"})") << "before anything is fired";
    runtime_.GetRoot().Fire();
    EXPECT_EQ(seen, R"({"source": "d.avi"})");
}

TEST_F(ConfigTreeTest, KeepsTheNodesOfAStreamThatStays) {
    Change(Gate);
    auto const gate = Find("streams.gate");
    auto const settings = Find("streams.gate.settings.Threshold");
    Change(R"({"streams": {"door": {"source": "d", "algorithms": ["invert"]},
                           "gate": {"source": "other", "algorithms": ["threshold", "invert"]}}})",
           Gate);
    EXPECT_EQ(Find("streams.gate"), gate);
    EXPECT_EQ(Find("streams.gate.settings.Threshold"), settings);
    EXPECT_NE(Find("streams.gate.settings.Invert"), nullptr);
}

TEST_F(ConfigTreeTest, SaysWhatEachStreamIsToDo) {
    std::string const document = R"({"streams": {
        "gate": {"source": "videos/../g.avi", "loop": true, "algorithms": ["threshold", "test.Invert"],
                 "calibration": "/etc/c.json"},
        "door": {"source": "rtsp://camera/door", "enabled": false, "algorithms": ["gone"], "calibration": ""}}})";
    Change(document);
    auto const specs = tree_->MakeSpecs(Parse(document), "/somewhere");
    ASSERT_EQ(specs.size(), 2U);
    EXPECT_EQ(specs[0].id, "gate");
    EXPECT_EQ(specs[0].source, "/somewhere/g.avi");
    EXPECT_EQ(specs[0].calibration, "/etc/c.json");
    EXPECT_TRUE(specs[0].loop);
    EXPECT_TRUE(specs[0].enabled);
    EXPECT_THAT(specs[0].algorithms, ElementsAre("threshold", "test.Invert"));
    EXPECT_EQ(specs[0].settings.at("threshold"), Find("streams.gate.settings.Threshold"));
    EXPECT_EQ(specs[0].settings.at("test.Invert"), Find("streams.gate.settings.Invert"));
    EXPECT_EQ(specs[1].source, "rtsp://camera/door");
    EXPECT_EQ(specs[1].calibration, "");
    EXPECT_FALSE(specs[1].loop);
    EXPECT_FALSE(specs[1].enabled);
    EXPECT_THAT(specs[1].settings, IsEmpty()) << "nobody knows the algorithm";
    EXPECT_THAT(tree_->MakeSpecs(Parse("{}"), "/somewhere"), IsEmpty());
}

TEST_F(ConfigTreeTest, DescribesAnyStream) {
    object const schema = ConfigTree::MakeStreamSchema();
    EXPECT_EQ(schema.at("type"), "object");
    object const& properties = schema.at("properties").as_object();
    for (char const* const name : {"source", "loop", "enabled", "algorithms", "calibration", "settings"}) {
        EXPECT_TRUE(properties.contains(name)) << name;
    }
    EXPECT_TRUE(properties.at("settings").at("properties").as_object().empty());
    EXPECT_EQ(Data("streams"), "{}") << "nobody has made one";
}

}  // namespace
}  // namespace qel::serve
