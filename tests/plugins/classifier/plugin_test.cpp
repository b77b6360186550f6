// The plug-in as a host meets it: loaded, registered, configured, published, bound.

#include <atomic>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/plugin_test_base.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/model_folder.hpp"
#include "test_frame.hpp"

namespace qel::classifier {
namespace {

namespace video = algorithm::video;

/// A model root with the model "classifier", before anything else is made.
struct WithModel {
    WithModel() {
        folder.Write("classifier", "labels.txt", "red\nblue\n");
        folder.Write("classifier", {.weights = {{9, 0, 0}, {0, 0, 9}}}, R"({"max_batch_size": 1, "version": "3.1"})");
    }
    test::ModelFolder folder;
};

class ClassifierPlugin : protected WithModel, public test::PluginTest<video::passthrough::Algorithm> {
protected:
    ClassifierPlugin()
        : PluginTest("qel.algorithm.video.Classifier", std::make_unique<Manager>(folder.GetRoot().string())) {}

    std::string LabelOfRed() {
        EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
        TestFrame frame(ColourFormat::Rgb24, 20, 20);
        frame.Paint(0, 0, 20, 20, Red);
        video::Result result;
        result.objects.push_back({{0, 0, 20, 20}, 400, "motion", 0});
        algorithm_->Process(frame.Get(), result);
        return result.objects[0].label;
    }
};

TEST_F(ClassifierPlugin, RegistersItsAlgorithmAndMakesANodeForEachProperty) {
    ASSERT_NE(algorithm_, nullptr);
    EXPECT_EQ(algorithm_->GetTypeNameId(), hash::MurmurThree32("qel.algorithm.video.Classifier"));
    EXPECT_THAT(GetPropertyNames(), testing::ElementsAre("model", "minimum_confidence", "margin"));
    auto const bindings = algorithm_->BindToConfiguration(*map_);
    EXPECT_EQ(bindings.size(), 3U);
    for (type::Binding const& binding : bindings) EXPECT_TRUE(binding);
}

TEST_F(ClassifierPlugin, PublishesItsLabelsAndTheStateOfItsModel) {
    auto const published = root_->Find("algorithms.info.classifier");
    ASSERT_NE(published, nullptr);
    auto const status = [&] {
        EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
        return published->As<Map>().Find("model_status")->As<configuration::node::DynamicEnum>().Get();
    };
    EXPECT_EQ(status(), "loaded");
    std::string const data = configuration::json::Data(*published);
    EXPECT_THAT(data, testing::StartsWith(R"({"typename": "qel.algorithm.type.ObjectClassifier","version": "3.1",)"));
    EXPECT_THAT(data, testing::ContainsRegex("\"classes\": .*\"blue\".*\"red\""));
    folder.Write("classifier", "model.onnx", "broken");
    EXPECT_EQ(status(), "failed");
    folder.Remove("classifier");
    EXPECT_EQ(status(), "unloaded");
    folder.Write("classifier", {.weights = {{9, 0, 0}, {0, 0, 9}}}, R"({"max_batch_size": 1})");
    EXPECT_EQ(status(), "loaded");
}

TEST_F(ClassifierPlugin, PublishesTheLabelsOfEachVersionOfItsModel) {
    auto const published = root_->Find("algorithms.info.classifier");
    ASSERT_NE(published, nullptr);
    auto const classes = published->As<Map>().Find("classes");
    std::atomic<int> told = 0;
    auto const binding = classes->Bind([&](auto const&) { ++told; });
    auto const settled = [&] {
        EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
        return configuration::json::Data(*classes);
    };
    EXPECT_EQ(settled(), R"({"classes": ["blue","red"]})");
    EXPECT_EQ(told, 0) << "they were known before it was loaded";
    folder.Write("classifier", "labels.txt", "warm\nneither\ncold\n");
    EXPECT_EQ(settled(), R"({"classes": ["cold","neither","warm"]})");
    EXPECT_EQ(told, 1);
    // What cannot be used has no classes of its own: those of the last one stay, and "model_status" tells the rest.
    folder.Write("classifier", "model.onnx", "broken");
    EXPECT_EQ(settled(), R"({"classes": ["cold","neither","warm"]})");
    folder.Remove("classifier");
    EXPECT_EQ(settled(), R"({"classes": ["cold","neither","warm"]})");
    folder.Write("classifier", "labels.txt", "red\nblue\n");
    folder.Write("classifier", {.weights = {{9, 0, 0}, {0, 0, 9}}}, R"({"max_batch_size": 1})");
    EXPECT_EQ(settled(), R"({"classes": ["blue","red"]})");
    EXPECT_EQ(told, 2);
}

TEST_F(ClassifierPlugin, FollowsItsModelOnceHoweverOftenItIsMade) {
    auto const more = Map::Make("more");
    root_->Insert(more);
    auto const registry = video::registry::Get().GetMap();
    registry->at(hash::MurmurThree32("qel.algorithm.video.Classifier")).CreateConfigNodes(*manager_, more);
    auto const alone = Map::Make("alone");
    registry->at(hash::MurmurThree32("qel.algorithm.video.Classifier")).CreateConfigNodes(*manager_, alone);
    EXPECT_EQ(alone->GetChildren().size(), 3U);
    std::atomic<int> told = 0;
    auto const binding = root_->Find("algorithms.info.classifier.classes")->Bind([&](auto const&) { ++told; });
    EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
    folder.Write("classifier", "labels.txt", "green\nblue\n");
    EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
    EXPECT_EQ(told, 1);
}

TEST_F(ClassifierPlugin, LeavesATreeAloneThatHasGone) {
    EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
    root_->Exchange({"algorithms"}, {});
    folder.Write("classifier", "labels.txt", "green\nblue\n");
    EXPECT_TRUE(manager_->WaitUntilSettled(test::Patience));
    EXPECT_EQ(root_->Find("algorithms"), nullptr);
}

TEST_F(ClassifierPlugin, FollowsItsNodesFromTheNextFrameOn) {
    auto const bindings = algorithm_->BindToConfiguration(*map_);
    EXPECT_EQ(LabelOfRed(), "red");
    map_->Set("minimum_confidence", 1.0);
    EXPECT_EQ(LabelOfRed(), "motion");
    map_->Set("minimum_confidence", 0.1);
    EXPECT_EQ(LabelOfRed(), "red");
    map_->Set("model", std::string("none"));
    EXPECT_EQ(LabelOfRed(), "motion");
}

TEST_F(ClassifierPlugin, RefusesValuesOutOfRange) {
    EXPECT_THROW(map_->Set("minimum_confidence", 1.01), std::out_of_range);
    EXPECT_THROW(map_->Set("margin", -0.01), std::out_of_range);
}

}  // namespace
}  // namespace qel::classifier
