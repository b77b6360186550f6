#include "classifier.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inference/following.hpp"
#include "support/message_of.hpp"
#include "test_frame.hpp"

namespace qel::classifier {
namespace {

using algorithm::video::Object;
using algorithm::video::Result;
using inference::LoggedText;
using testing::HasSubstr;

constexpr char Metadata[] = R"({"max_batch_size": 3})";

/// Scores for red, green and blue that tell them apart clearly.
test::MeanClassifier Colours() { return {.weights = {{9, -9, -9}, {-9, 9, -9}, {-9, -9, 9}}}; }

class Labelling : public testing::Test {
protected:
    Labelling() { WriteColours("red\ngreen\nblue\n"); }

    void WriteColours(std::string_view labels, std::string_view metadata = Metadata) {
        folder.Write(DefaultModel, "labels.txt", labels);
        folder.Write(DefaultModel, Colours(), metadata);
    }
    void Start() {
        manager.emplace(folder.GetRoot().string());
        classifier.emplace(*manager);
        Settle();
    }
    void Settle() { ASSERT_TRUE(manager->WaitUntilSettled(test::Patience)); }

    /// A frame with a red, a green and a blue square, and the objects that they are.
    static TestFrame MakeFrame(ColourFormat format = ColourFormat::Nv12) {
        TestFrame frame(format, 100, 40);
        frame.Paint(10, 10, 30, 30, Red);
        frame.Paint(40, 10, 60, 30, Green);
        frame.Paint(70, 10, 90, 30, Blue);
        return frame;
    }
    static Result MakeResult() {
        Result result;
        for (unsigned int x = 10; x < 90; x += 30)
            result.objects.push_back({{x, 10, x + 20, 30}, 400, "motion", 0.25F});
        return result;
    }
    static std::vector<std::string> LabelsOf(Result const& result) {
        std::vector<std::string> labels;
        for (Object const& object : result.objects) labels.push_back(object.label);
        return labels;
    }
    Result Run(ColourFormat format = ColourFormat::Nv12) {
        TestFrame const frame = MakeFrame(format);
        Result result = MakeResult();
        classifier->Process(frame.Get(), result);
        return result;
    }
    std::vector<std::string> Labels(ColourFormat format = ColourFormat::Nv12) { return LabelsOf(Run(format)); }

    LoggedText log;
    test::ModelFolder folder;
    std::optional<inference::backend::Manager> manager;
    std::optional<Classifier> classifier;
};

auto const AsTheyAre = testing::ElementsAre("motion", "motion", "motion");
auto const ByColour = testing::ElementsAre("red", "green", "blue");

TEST_F(Labelling, GivesLabelAndConfidenceOfTheLikeliestClass) {
    Start();
    Result const result = Run();
    EXPECT_THAT(LabelsOf(result), ByColour);
    for (Object const& object : result.objects) {
        EXPECT_GT(object.confidence, 0.9F);
        EXPECT_LE(object.confidence, 1.0F);
        EXPECT_EQ(object.area, 400U);
    }
}

TEST_F(Labelling, WorksOnAllColourFormats) {
    Start();
    auto formats = classifier->GetSupportedColourFormats();
    EXPECT_EQ(formats.size(), 5U);
    std::erase(formats, ColourFormat::Grey8);  // which has no colours
    for (ColourFormat const format : formats) EXPECT_THAT(Labels(format), ByColour) << static_cast<int>(format);
}

TEST_F(Labelling, WorksWithNetworksThatTakeGrey) {
    folder.Write(DefaultModel, "labels.txt", "dark\nbright\n");
    folder.Write(DefaultModel, {.channels = 1, .weights = {{-20}, {20}}}, R"({"max_batch_size": 8, "means": [0.4]})");
    Start();
    classifier->ChangeSettings([](Settings& settings) { settings.margin = 0; });
    for (ColourFormat const format : classifier->GetSupportedColourFormats()) {
        EXPECT_THAT(Labels(format), testing::ElementsAre("dark", "bright", "dark")) << static_cast<int>(format);
    }
}

TEST_F(Labelling, KeepsTheFormerLabelWhereTheNetworkIsNotSureEnough) {
    Start();
    classifier->ChangeSettings([](Settings& settings) { settings.minimumConfidence = 1; });
    TestFrame frame = MakeFrame();
    frame.Paint(0, 0, 100, 40, {120, 120, 120});
    Result result = MakeResult();
    classifier->Process(frame.Get(), result);
    EXPECT_THAT(LabelsOf(result), AsTheyAre);
    EXPECT_EQ(result.objects[0].confidence, 0.25F);
    classifier->ChangeSettings([](Settings& settings) { settings.minimumConfidence = 0; });
    classifier->Process(frame.Get(), result);
    EXPECT_NEAR(result.objects[0].confidence, 1 / 3.0, 0.1);
}

TEST_F(Labelling, PassesOverObjectsOutsideTheFrame) {
    Start();
    Result result = MakeResult();
    result.objects[1].box = {200, 0, 220, 20};
    classifier->Process(MakeFrame().Get(), result);
    EXPECT_THAT(LabelsOf(result), testing::ElementsAre("red", "motion", "blue"));
    Result none;
    classifier->Process(MakeFrame().Get(), none);
    EXPECT_TRUE(none.objects.empty());
}

TEST_F(Labelling, ShowsTheNetworkTheMarginToo) {
    Start();
    TestFrame frame(ColourFormat::Rgb24, 100, 40);
    frame.Paint(0, 0, 100, 40, Blue);
    frame.Paint(40, 10, 60, 30, Red);
    Result result;
    result.objects.push_back({{40, 10, 60, 30}, 400, "motion", 0});
    classifier->ChangeSettings([](Settings& settings) { settings.margin = 1; });
    classifier->Process(frame.Get(), result);
    EXPECT_EQ(result.objects[0].label, "blue") << "20 x 20 red pixels of 60 x 40";
    classifier->ChangeSettings([](Settings& settings) { settings.margin = 0; });
    classifier->Process(frame.Get(), result);
    EXPECT_EQ(result.objects[0].label, "red");
}

TEST_F(Labelling, LeavesObjectsAloneWithoutAModel) {
    inference::backend::Manager none;
    classifier.emplace(none);
    EXPECT_THAT(Labels(), AsTheyAre);
    Start();
    classifier->ChangeSettings([](Settings& settings) { settings.model = "another"; });
    EXPECT_THAT(Labels(), AsTheyAre);
    EXPECT_EQ(log.Take(), "");
    folder.Write("another", "labels.txt", "r\ng\nb");
    folder.Write("another", Colours(), Metadata);
    Settle();
    EXPECT_THAT(Labels(), testing::ElementsAre("r", "g", "b"));
}

TEST_F(Labelling, FollowsTheModel) {
    Start();
    EXPECT_THAT(Labels(), ByColour);
    folder.Write(DefaultModel, "labels.txt", "rouge\nvert\nbleu\n");
    Settle();
    EXPECT_THAT(Labels(), testing::ElementsAre("rouge", "vert", "bleu"));
    folder.Remove(DefaultModel);
    Settle();
    EXPECT_THAT(Labels(), AsTheyAre);
    // Another number of classes.
    folder.Write(DefaultModel, "labels.txt", "warm\ncold\n");
    folder.Write(DefaultModel, {.weights = {{9, -9, -9}, {-9, 9, 9}}}, Metadata);
    Settle();
    EXPECT_THAT(Labels(), testing::ElementsAre("warm", "cold", "cold"));
}

TEST_F(Labelling, TellsOnceWhatIsWrongWithAModelAndWaitsForAnother) {
    folder.Write(DefaultModel, "labels.txt", "red\ngreen\n");
    Start();
    EXPECT_THAT(Labels(), AsTheyAre);
    EXPECT_THAT(Labels(), AsTheyAre);
    EXPECT_EQ(log.Take(),
              "Model classifier cannot classify; objects stay as they are until it changes: The network gives 9 values "
              "for 3 pictures, and there are 2 labels\n");
    WriteColours("red\ngreen\nblue\n", R"({"max_batch_size": 1, "means": "none"})");
    Settle();
    EXPECT_THAT(Labels(), AsTheyAre);
    EXPECT_THAT(log.Take(), HasSubstr("\"means\" of the metadata must be a list of 3 numbers"));
    WriteColours("red\ngreen\nblue\n", R"({"max_batch_size": 1, "input_width": 9})");
    Settle();
    EXPECT_THAT(Labels(), AsTheyAre);
    EXPECT_THAT(log.Take(), HasSubstr("The network takes batches of the shape ? x 3 x 8 x 8, not 3 x 3 x 8 x 9"));
    std::filesystem::remove(folder.FileOf(DefaultModel, "labels.txt"));
    Settle();
    EXPECT_THAT(Labels(), AsTheyAre);
    EXPECT_THAT(log.Take(), HasSubstr("There is no file \"labels.txt\" beside the model"));
    WriteColours("red\ngreen\nblue\n");
    Settle();
    EXPECT_THAT(Labels(), ByColour);
    EXPECT_EQ(log.Take(), "");
}

TEST_F(Labelling, WaitsForTheModelInOfflineMode) {
    manager.emplace(folder.GetRoot().string());
    classifier.emplace(*manager);
    classifier->SetOfflineModeEnabled(true);
    EXPECT_THAT(Labels(), ByColour) << "from the first frame on";
}

TEST_F(Labelling, RefusesFramesThatCannotBeRead) {
    Start();
    Result result = MakeResult();
    EXPECT_THAT(test::MessageOf<std::invalid_argument>([&] { classifier->Process({}, result); }),
                testing::StartsWith("Cannot classify what is in the frame "));
    EXPECT_THAT(LabelsOf(result), AsTheyAre);
}

}  // namespace
}  // namespace qel::classifier
