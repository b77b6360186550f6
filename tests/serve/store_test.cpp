#include "store.hpp"

#include <filesystem>

#include <gmock/gmock.h>

#include "error.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "store_fixture.hpp"

namespace qel::serve {
namespace {

using configuration::Node;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

TEST_F(StoreTest, CreatesAnEmptyConfiguration) {
    Open();
    EXPECT_EQ(test::ReadFile(path_), "{\n  \"streams\": {},\n  \"algorithms\": {}\n}\n");
    EXPECT_EQ(Data("streams"), "{}");
    EXPECT_EQ(Data("algorithms.Threshold.threshold"), "200");
    EXPECT_THAT(store_->GetStreams(), IsEmpty());
    EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt);
    EXPECT_THAT(store_->GetProblems(), IsEmpty());
}

TEST_F(StoreTest, TakesStreamsFromTheFile) {
    OpenWith(R"({"streams": {
        "gate": {"source": "videos/../gate.avi", "loop": true, "algorithms": ["threshold", "test.Sample"],
                 "calibration": "gate.json", "settings": {"Threshold": {"threshold": 20}}},
        "a-Door_2": {"source": "rtsp://camera/door", "enabled": false, "algorithms": ["invert"]}}})");
    EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt);
    auto const streams = store_->GetStreams();
    ASSERT_EQ(streams.size(), 2U);
    EXPECT_EQ(streams[0].id, "gate");
    EXPECT_EQ(streams[0].source, directory_ / "gate.avi");
    EXPECT_TRUE(streams[0].loop);
    EXPECT_TRUE(streams[0].enabled);
    EXPECT_THAT(streams[0].algorithms, ElementsAre("threshold", "test.Sample"));
    EXPECT_EQ(streams[0].calibration, directory_ / "gate.json");
    ASSERT_EQ(streams[0].settings.size(), 2U);
    EXPECT_EQ(streams[0].settings.at("threshold"), runtime_->GetRoot().Find("streams.gate.settings.Threshold"));
    EXPECT_NE(streams[0].settings.at("test.Sample"), nullptr);
    EXPECT_EQ(streams[1].id, "a-Door_2");
    EXPECT_EQ(streams[1].source, "rtsp://camera/door");
    EXPECT_FALSE(streams[1].loop);
    EXPECT_FALSE(streams[1].enabled);
    EXPECT_EQ(streams[1].calibration, "");
    EXPECT_EQ(Data("streams.gate.source"), R"("videos/../gate.avi")");
    EXPECT_EQ(Data("streams.gate.algorithms"), R"(["threshold","test.Sample"])");
    EXPECT_EQ(Data("streams.gate.algorithms[1]"), R"("test.Sample")");
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "20");
    EXPECT_EQ(Data("streams.gate.settings.Threshold.enabled"), "true");
    EXPECT_EQ(Data("streams.a-Door_2.settings"), R"({"Invert": {}})");
    EXPECT_EQ(Data("streams.hall"), "none");
    EXPECT_EQ(Data("stream"), "none");
    EXPECT_THAT(Data(""), StartsWith(R"({"algorithms": {"info": {})"));
}

TEST_F(StoreTest, SavesAChangeAndFindsItAgain) {
    OpenWith(Gate);
    EXPECT_THAT(
        Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 30, "label": "other"}}}}})"),
        UnorderedElementsAre("streams.gate.settings.Threshold.threshold", "streams.gate.settings.Threshold.label"));
    EXPECT_EQ(test::ReadFile(path_), R"({
  "streams": {
    "gate": {
      "source": "gate.avi",
      "algorithms": ["threshold","Invert"],
      "settings": {
        "Threshold": {
          "threshold": 30,
          "label": "other"
        }
      }
    }
  },
  "algorithms": {}
}
)");
    auto const document = store_->GetDocument();
    auto const data = store_->GetData("");
    Open();
    EXPECT_EQ(store_->GetDocument(), document);
    EXPECT_EQ(store_->GetData(""), data);
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "30");
}

TEST_F(StoreTest, AddsAndRemovesStreams) {
    OpenWith(Gate);
    EXPECT_THAT(Patch(R"({"streams": {"door": {"source": "door.avi", "algorithms": ["invert"], "loop": null}}})"),
                ElementsAre("streams.door"));
    ASSERT_EQ(store_->GetStreams().size(), 2U);
    EXPECT_EQ(store_->GetStreams()[1].id, "door");
    EXPECT_EQ(Data("streams.door.loop"), "false");
    EXPECT_THAT(Patch(R"({"streams": {"gate": null, "hall": {"source": "hall.avi", "algorithms": ["threshold"],
                                                            "settings": {"Threshold": {"threshold": 7}}}}})"),
                UnorderedElementsAre("streams.gate", "streams.hall"));
    ASSERT_EQ(store_->GetStreams().size(), 2U);
    EXPECT_EQ(store_->GetStreams()[0].id, "door");
    EXPECT_EQ(store_->GetStreams()[1].id, "hall");
    EXPECT_EQ(Data("streams.gate"), "none");
    EXPECT_EQ(Data("streams.hall.settings.Threshold.threshold"), "7");
    EXPECT_THAT(Patch(R"({"streams": null})"), UnorderedElementsAre("streams.door", "streams.hall"));
    EXPECT_EQ(Data("streams"), "{}");
    EXPECT_EQ(store_->GetDocument(), Parse(R"({"algorithms": {}, "streams": {}})"));
}

TEST_F(StoreTest, MakesNodesForTheAlgorithmsOfAStream) {
    OpenWith(Gate);
    auto const threshold = runtime_->GetRoot().Find("streams.gate.settings.Threshold");
    EXPECT_THAT(
        Patch(R"({"streams": {"gate": {"algorithms": ["fail", "Threshold"]}}})"),
        UnorderedElementsAre("streams.gate.algorithms", "streams.gate.settings.Invert", "streams.gate.settings.Fail"));
    EXPECT_EQ(runtime_->GetRoot().Find("streams.gate.settings.Threshold"), threshold);
    EXPECT_EQ(Data("streams.gate.settings.Invert"), "none");
    EXPECT_EQ(Data("streams.gate.settings.Fail"), "{}");
    auto const stream = store_->GetStreams().front();
    EXPECT_THAT(stream.algorithms, ElementsAre("fail", "Threshold"));
    EXPECT_EQ(stream.settings.at("Threshold"), threshold);
    EXPECT_EQ(stream.settings.count("Invert"), 0U);
}

TEST_F(StoreTest, KeepsTheSettingsOfAnAlgorithmThatIsNotListed) {
    OpenWith(Gate);
    Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 9}}}}})");
    Patch(R"({"streams": {"gate": {"algorithms": ["invert"]}}})");
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "9");
    EXPECT_EQ(store_->GetStreams().front().settings.count("Threshold"), 0U);
    Patch(R"({"streams": {"gate": {"settings": null}}})");
    EXPECT_EQ(Data("streams.gate.settings"), R"({"Invert": {}})");
}

TEST_F(StoreTest, HasAStreamFollowTheAlgorithmsOwnSettings) {
    OpenWith(Gate);
    Patch(R"({"streams": {"door": {"source": "d", "algorithms": ["threshold"],
                                   "settings": {"Threshold": {"threshold": 50}}}}})");
    EXPECT_THAT(
        Patch(R"({"algorithms": {"Threshold": {"threshold": 70, "confidence": 0.25}}})"),
        UnorderedElementsAre("algorithms.Threshold.threshold", "algorithms.Threshold.confidence",
                             "streams.gate.settings.Threshold.threshold", "streams.gate.settings.Threshold.confidence",
                             "streams.door.settings.Threshold.confidence"));
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "70");
    EXPECT_EQ(Data("streams.door.settings.Threshold.threshold"), "50");
    // A new stream follows them from its start.
    Patch(R"({"streams": {"hall": {"source": "h", "algorithms": ["threshold"]}}})");
    EXPECT_EQ(Data("streams.hall.settings.Threshold.threshold"), "70");
    EXPECT_THAT(Patch(R"({"streams": {"door": {"settings": {"Threshold": {"threshold": null}}}}})"),
                ElementsAre("streams.door.settings.Threshold.threshold"));
    EXPECT_EQ(Data("streams.door.settings.Threshold.threshold"), "70");
    EXPECT_THAT(Patch(R"({"algorithms": {"Threshold": null}})"), testing::SizeIs(8));
    EXPECT_EQ(Data("algorithms.Threshold.threshold"), "200");
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "200");
    EXPECT_EQ(Data("streams.door.settings.Threshold.confidence"), "0.5");
}

TEST_F(StoreTest, TellsNothingOfAValueThatStaysTheSame) {
    OpenWith(Gate);
    EXPECT_THAT(Patch(R"({})"), IsEmpty());
    EXPECT_THAT(Patch(R"({"algorithms": {"Threshold": {"threshold": 200}}})"), IsEmpty());
    EXPECT_THAT(test::ReadFile(path_), HasSubstr("200")) << "kept all the same";
    EXPECT_THAT(Patch(R"({"streams": {"gate": {"settings": {"Threshold": {"threshold": 200.0}}}}})"), IsEmpty());
    EXPECT_THAT(Patch(R"({"streams": {"hall": null}})"), IsEmpty());
}

TEST_F(StoreTest, TakesSettingsOfEveryKind) {
    OpenWith(R"({"algorithms": {"test.Sample": {}}})");
    std::string const name = runtime_->GetRoot().Find("algorithms.Sample.byte") ? "Sample" : "test.Sample";
    Patch(R"({"streams": {"gate": {"source": "g", "algorithms": ["test.Sample"]}}})");
    struct Case {
        char const* setting;
        char const* value;
        char const* data;
    };
    Case const cases[] = {
        {"byte", "250", "250"},
        {"count", "-100", "-100"},
        {"big", "-9223372036854775808", "-9223372036854775808"},
        {"area", "12.0", "12"},
        {"ratio", "0.30000000000000004", "0.30000000000000004"},
        {"ratio", "1", "1.0"},
        {"any", "-1e300", "-1e+300"},
        {"on", "false", "false"},
        {"word", R"("xyz")", R"("xyz")"},
        {"text", R"("line\n\"\u00e4")", "\"line\\n\\\"\xc3\xa4\""},
        {"mode", R"("exact")", R"("exact")"},
        {"names", R"(["a","b"])", R"(["a","b"])"},
        {"below", R"({"deep": 8})", R"({"deep": 8})"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.setting);
        std::string const patch = std::string(R"({")") + c.setting + R"(": )" + c.value + "}";
        Patch(R"({"streams": {"gate": {"settings": {")" + name + R"(": )" + patch + "}}}}");
        EXPECT_EQ(Data("streams.gate.settings." + name + "." + c.setting), c.data);
    }
    Patch(R"({"streams": {"gate": {"settings": {")" + name + R"(": {"names": null, "secret": "abc"}}}}})");
    EXPECT_EQ(Data("streams.gate.settings." + name + ".names"), "[]");
    EXPECT_EQ(Data("streams.gate.settings." + name + ".secret"), "none") << "not to be seen";
    EXPECT_THAT(Data("streams.gate"), testing::Not(HasSubstr("secret")));
    auto const data = store_->GetData("");
    Open();
    EXPECT_EQ(store_->GetData(""), data);
}

TEST_F(StoreTest, LeavesATreeThatAnotherStoreCanFollow) {
    OpenWith(Gate);
    store_.reset();
    EXPECT_EQ(runtime_->GetRoot().Find("streams"), nullptr);
    Store const other(*runtime_, path_);
    EXPECT_NE(runtime_->GetRoot().Find("streams.gate"), nullptr);
}

}  // namespace
}  // namespace qel::serve
