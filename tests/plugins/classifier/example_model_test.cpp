// The model that tools/example_model writes, as a person would try it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "classifier.hpp"
#include "support/model_folder.hpp"
#include "support/process.hpp"
#include "test_frame.hpp"

namespace qel::classifier {
namespace {

TEST(ExampleModel, TellsHowPeopleAreDressed) {
    test::ModelFolder const folder;
    auto const outcome =
        test::RunProcess({.program = QEL_TEST_EXAMPLE_MODEL, .arguments = {folder.GetRoot().string()}});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    inference::backend::Manager manager(folder.GetRoot().string());
    Classifier classifier(manager);
    classifier.SetOfflineModeEnabled(true);

    struct Case {
        TestFrame::Rgb clothes;
        char const* label;
    } const cases[] = {
        {{40, 40, 45}, "dark"}, {{220, 225, 215}, "light"}, {{200, 40, 40}, "red"}, {{30, 50, 190}, "blue"}};
    for (Case const& c : cases) {
        TestFrame frame(ColourFormat::Nv12, 200, 200);
        frame.Paint(0, 0, 200, 200, {150, 150, 150});
        frame.Paint(80, 40, 120, 160, c.clothes);
        algorithm::video::Result result;
        result.objects.push_back({{76, 40, 124, 160}, 4000, "motion", 0.5F});
        classifier.Process(frame.Get(), result);
        EXPECT_EQ(result.objects[0].label, c.label);
        EXPECT_GT(result.objects[0].confidence, 0.5F);
    }
}

TEST(ExampleModel, IsNotWrittenWithoutAFolder) {
    auto const outcome = test::RunProcess({.program = QEL_TEST_EXAMPLE_MODEL});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, testing::HasSubstr("usage: tools/example_model MODEL_ROOT"));
}

}  // namespace
}  // namespace qel::classifier
