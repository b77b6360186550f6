#include "onnx_graph.hpp"

#include <random>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/message_of.hpp"
#include "support/onnx_model.hpp"

namespace qel::inference {
namespace {

using testing::ElementsAre;

std::string Refusal(std::string const& bytes) {
    return test::MessageOf<std::runtime_error>([&] { (void)ReadOnnxGraph(bytes); });
}

TEST(OnnxGraph, TellsTheShapeOfTheInputWithOpenAxesAsZero) {
    auto const graph = ReadOnnxGraph(test::MakeOnnx({.channels = 3, .width = 5, .height = 7}));
    EXPECT_THAT(graph.inputShape, ElementsAre(0, 3, 7, 5));
}

TEST(OnnxGraph, DoesNotTakeWeightsForInputs) {
    std::string const bytes = test::MakeOnnx({.weightsAreInputs = true});
    EXPECT_THAT(ReadOnnxGraph(bytes).inputShape, ElementsAre(0, 3, 8, 8));
}

TEST(OnnxGraph, RefusesWhatIsNoModel) {
    EXPECT_EQ(Refusal(""), "is empty");
    EXPECT_EQ(Refusal("This is no network"), "is no ONNX model, or only a part of one");
    EXPECT_EQ(Refusal(std::string(1000, '\0')), "is no ONNX model, or only a part of one");
    EXPECT_EQ(Refusal(std::string("\x08\x08", 2)), "is no ONNX model: it has no network");
    EXPECT_EQ(Refusal(test::MakeOnnx({.extraInputs = 1})), "has 2 inputs; a network must have one");
    EXPECT_EQ(Refusal(test::MakeOnnx({.inputElementType = 10})), "takes other numbers than 32-bit floats");
}

TEST(OnnxGraph, RefusesTensorsWithAnotherNumberOfValuesThanTheirSizesSay) {
    constexpr char const* message = "has a tensor with another number of values than its sizes say";
    EXPECT_EQ(Refusal(test::MakeOnnx({.weights = {{1, 0}, {0, 1}}})), message) << "values for two channels of three";
    EXPECT_EQ(Refusal(test::MakeOnnx({.weights = {{1, 0, 0, 0}}})), message);
}

TEST(OnnxGraph, RefusesEveryBeginningOfAModel) {
    std::string const bytes = test::MakeOnnx({});
    std::size_t refused = 0;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        try {
            (void)ReadOnnxGraph(bytes.substr(0, size));
        } catch (std::runtime_error const&) {
            ++refused;
        }
    }
    // Only what stands behind the network, the version of its operators, can be missed unnoticed.
    EXPECT_GE(refused, bytes.size() - 1);
}

TEST(OnnxGraph, EndsOnAnyBytes) {
    std::mt19937 random(1);
    std::string const good = test::MakeOnnx({});
    for (int i = 0; i < 20000; ++i) {
        std::string bytes = good;
        for (auto changes = 1 + random() % 4; changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        try {
            EXPECT_LE(ReadOnnxGraph(bytes).inputShape.size(), 8U);
        } catch (std::runtime_error const&) {}
    }
}

}  // namespace
}  // namespace qel::inference
