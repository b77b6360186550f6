#include "qel/algorithm/info_builder.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "info/publishing.hpp"
#include "qel/algorithm/info/colour_classifier.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/info/state_classifier.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::algorithm {
namespace {

using info::ColourClassifier;
using info::ObjectClassifier;
using info::StateClassifier;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class InfoBuilderTest : public testing::Test {
protected:
    void Publish(Strings names, std::string const& name = "door") {
        InfoBuilder::Register(manager, std::make_shared<StateClassifier>(*root, name, "Door", std::move(names)));
    }
    std::string Published() { return configuration::json::Data(*root); }

    std::shared_ptr<Map> root = Map::Make("root");
    RecordingManager manager;
    ModelRoot models;
    LoggedLines log;
};

TEST_F(InfoBuilderTest, PublishesADescriptorWithoutModelsAndLooksForNoFile) {
    InfoBuilder::Register(
        manager, std::make_shared<ObjectClassifier>(*root, "people", "People", std::set<std::string>{"person", "car"},
                                                    Loaded, "1.2"));
    EXPECT_EQ(
        Published(),
        R"({"algorithms": {"info": {"people": {"typename": "qel.algorithm.type.ObjectClassifier","version": "1.2",)"
        R"("model_status": "loaded","classes": ["car","person"]}}}})");
    EXPECT_THAT(manager.callbacks, IsEmpty());
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(InfoBuilderTest, DescribesEveryNodeAndMakesItReadOnly) {
    InfoBuilder::Register(manager, std::make_shared<ObjectClassifier>(*root, "people", "People",
                                                                      std::set<std::string>{"car"}, Loaded, "1.2"));
    EXPECT_THAT(List(*root->Find("algorithms")),
                ElementsAre("algorithms [10] qel.configuration.node.Map: ",
                            "algorithms.info [10] qel.configuration.node.Map: Information about the algorithms",
                            "algorithms.info.people [10] qel.configuration.node.Map: "
                            "Information associated with the 'People' algorithm",
                            "algorithms.info.people.typename [10] qel.configuration.node.String: "
                            "The typename of this algorithm",
                            "algorithms.info.people.version [10] qel.configuration.node.String: "
                            "The version of this algorithm",
                            "algorithms.info.people.model_status [10] qel.configuration.node.DynamicEnum: "
                            "The status of this algorithm",
                            "algorithms.info.people.classes [10] qel.configuration.node.Vector: ",
                            "algorithms.info.people.classes[] [10] qel.configuration.node.String: "
                            "The name of a class this algorithm can return"));
    EXPECT_THROW(configuration::json::Stage(*root, R"({"algorithms": {"info": {"people": {"version": "2"}}}})"),
                 std::logic_error);
}

TEST_F(InfoBuilderTest, DescribesAnAlgorithmByItsNameWhenItHasNoFriendlyName) {
    InfoBuilder::Register(manager, std::make_shared<StateClassifier>(*root, "door", "", Loaded, "1"));
    EXPECT_EQ(root->Find("algorithms.info.door")->GetDescription(), "Information associated with the 'door' algorithm");
}

TEST_F(InfoBuilderTest, PublishesColours) {
    InfoBuilder::Register(
        manager, std::make_shared<ColourClassifier>(*root, "colour", "",
                                                    ColourClassifier::Colours{{"red", {255, 0, 0}}}, Loaded, "1"));
    EXPECT_EQ(DataOf(*root, "algorithms.info.colour.colours"), R"({"red": {"r": 255,"g": 0,"b": 0}})");
}

TEST_F(InfoBuilderTest, PublishesSeveralAlgorithmsSideBySide) {
    Publish({}, "b");
    Publish({}, "a");
    EXPECT_THAT(List(*root->Find("algorithms.info")), Contains(HasSubstr("info.a.version")));
    EXPECT_LT(Published().find("\"b\""), Published().find("\"a\""));
}

TEST_F(InfoBuilderTest, UsesTheMapsThatAreThere) {
    auto const algorithms = Map::Make("algorithms", "mine");
    algorithms->Insert(Map::Make("video", "mine too"));
    root->Insert(algorithms);
    Publish({}, "a");
    EXPECT_EQ(root->Find("algorithms"), algorithms);
    EXPECT_NE(root->Find("algorithms.video"), nullptr);
    EXPECT_EQ(root->Find("algorithms.info")->GetDescription(), "Information about the algorithms");
    auto const info = root->Find("algorithms.info");
    Publish({}, "b");
    EXPECT_EQ(root->Find("algorithms.info"), info);
}

TEST_F(InfoBuilderTest, NeedsAMapForARootAndMakesNothingOtherwise) {
    auto const value = configuration::node::Primitive<std::string>::Make("value", "", "");
    try {
        InfoBuilder::Register(manager, std::make_shared<StateClassifier>(*value, "door", "", Strings{"a"}));
        FAIL();
    } catch (object::BadCast const& error) {
        EXPECT_STREQ(error.what(),
                     "Failed to cast the runtime object from 'qel.configuration.node.String' to a "
                     "'qel.configuration.node.Map'");
    }
    EXPECT_THAT(manager.callbacks, IsEmpty());
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(InfoBuilderTest, NeedsMapsWhereItPublishes) {
    root->Insert(configuration::node::Primitive<std::string>::Make("algorithms", "", ""));
    EXPECT_THROW(Publish({}), object::BadCast);
    root = Map::Make("root");
    auto const algorithms = Map::Make("algorithms");
    algorithms->Insert(configuration::node::Primitive<std::string>::Make("info", "", ""));
    root->Insert(algorithms);
    EXPECT_THROW(Publish({}), object::BadCast);
}

TEST_F(InfoBuilderTest, NeedsADescriptor) {
    EXPECT_THROW(InfoBuilder::Register(manager, nullptr), std::invalid_argument);
}

TEST_F(InfoBuilderTest, RefusesANameThatIsTakenAfterItsCallbacksAreRegistered) {
    models.WriteMetadata("a", R"({"max_batch_size": 1, "version": "1"})");
    Publish({"a"});
    models.WriteMetadata("a", R"({"max_batch_size": 1, "version": "2"})");
    EXPECT_THROW(Publish({"a"}), std::invalid_argument);
    EXPECT_EQ(manager.callbacks.size(), 2U);
    EXPECT_EQ(DataOf(*root, "algorithms.info.door.version"), R"({"version": "1"})");
}

TEST_F(InfoBuilderTest, KeepsNeitherTheDescriptorNorTheTree) {
    auto const info = std::make_shared<StateClassifier>(*root, "door", "", Strings{"a"});
    InfoBuilder::Register(manager, info);
    EXPECT_EQ(info.use_count(), 1);
    std::weak_ptr<Node> const status = root->Find("algorithms.info.door.model_status");
    root.reset();
    EXPECT_TRUE(status.expired());
    manager.callbacks.front().second(Loaded);
}

TEST_F(InfoBuilderTest, RegistersModelsInOrderWhenValuesStandAndTheMapIsNotYetInserted) {
    Strings trace;
    manager.onRegister = [&](std::string const& model, auto const&) {
        trace.push_back(model + (root->Find("algorithms.info") ? " below info" : " without info") +
                        (root->Find("algorithms.info.door") ? " inserted" : " not inserted") + ", " +
                        std::to_string(log.lines.size()) + " lines");
    };
    Publish({"b", "a", "b"});
    EXPECT_THAT(trace, ElementsAre("b below info not inserted, 0 lines", "a below info not inserted, 0 lines",
                                   "b below info not inserted, 0 lines"));
    EXPECT_NE(root->Find("algorithms.info.door"), nullptr);
}

TEST_F(InfoBuilderTest, TakesTheVersionFromTheFirstModelsFile) {
    models.WriteMetadata("a", R"({"max_batch_size": 8, "version": "3.1"})");
    models.WriteMetadata("b", R"({"max_batch_size": 8, "version": "other"})");
    Publish({"a", "b"});
    EXPECT_EQ(DataOf(*root, "algorithms.info.door"),
              R"({"typename": "qel.algorithm.type.StateClassifier","version": "3.1","model_status": "unloaded"})");
    EXPECT_THAT(log.lines, ElementsAre("2 qel.algorithm.InfoBuilder: Looking for model: a metadata at: \"" +
                                       models.GetPath() + "/a/onnx/metadata.json\""));
}

TEST_F(InfoBuilderTest, WarnsWhenThereIsNoFileAndPublishesWithoutAVersion) {
    models.WriteMetadata("b", R"({"max_batch_size": 8, "version": "other"})");
    Publish({"a", "b"});
    EXPECT_EQ(DataOf(*root, "algorithms.info.door.version"), R"({"version": ""})");
    std::string const path = "\"" + models.GetPath() + "/a/onnx/metadata.json\"";
    EXPECT_THAT(log.lines, ElementsAre("2 qel.algorithm.InfoBuilder: Looking for model: a metadata at: " + path,
                                       "8 qel.algorithm.InfoBuilder: File " + path +
                                           " not found, leaving the 'version' field of a unpopulated"));
}

TEST_F(InfoBuilderTest, FollowsAModelThatIsReportedBeforeRegisterReturns) {
    manager.onRegister = [](std::string const&, auto const& callback) { callback(Loaded); };
    Publish({"a", "b"});
    EXPECT_EQ(DataOf(*root, "algorithms.info.door.model_status"), R"({"model_status": "loaded"})");
}

TEST_F(InfoBuilderTest, FollowsTheModelsOfARealManager) {
    struct ReportingManager : inference::backend::Manager {
        using Manager::ReportModelState;
    } reporting;
    reporting.ReportModelState("a", Loaded);
    InfoBuilder::Register(reporting, std::make_shared<StateClassifier>(*root, "door", "", Strings{"a", "b"}));
    EXPECT_EQ(DataOf(*root, "algorithms.info.door.model_status"), R"({"model_status": "loading"})");
    reporting.ReportModelState("b", Loaded);
    EXPECT_EQ(DataOf(*root, "algorithms.info.door.model_status"), R"({"model_status": "loaded"})");
    reporting.ReportModelState("a", Failed);
    EXPECT_EQ(DataOf(*root, "algorithms.info.door.model_status"), R"({"model_status": "failed"})");
}

/// A descriptor whose schemas lack a node that Register needs.
class Incomplete : public StateClassifier {
public:
    Incomplete(Node& root, std::size_t missing) : StateClassifier(root, "door", "", Strings{"a"}), missing_(missing) {}

    std::vector<configuration::Schema> GetSchemas() const override {
        auto schemas = StateClassifier::GetSchemas();
        schemas.erase(schemas.begin() + static_cast<std::ptrdiff_t>(missing_));
        return schemas;
    }
    void Set(Map&) const override {}

private:
    std::size_t missing_;
};

TEST_F(InfoBuilderTest, NeedsTheNodesItWritesBeforeItRegistersAnything) {
    EXPECT_THROW(InfoBuilder::Register(manager, std::make_shared<Incomplete>(*root, 1)), object::BadCast);
    EXPECT_THROW(InfoBuilder::Register(manager, std::make_shared<Incomplete>(*root, 2)), object::BadCast);
    EXPECT_THAT(manager.callbacks, IsEmpty());
    EXPECT_EQ(DataOf(*root, "algorithms.info"), "{}");
}

TEST_F(InfoBuilderTest, PassesOnWhatTheManagerThrowsAndPublishesNothing) {
    manager.onRegister = [](std::string const& model, auto const&) {
        if (model == "b") throw std::runtime_error("no such model");
    };
    EXPECT_THROW(Publish({"a", "b", "c"}), std::runtime_error);
    EXPECT_EQ(manager.callbacks.size(), 1U);
    EXPECT_EQ(DataOf(*root, "algorithms.info"), "{}");
    manager.callbacks.front().second(Loaded);
}

}  // namespace
}  // namespace qel::algorithm
