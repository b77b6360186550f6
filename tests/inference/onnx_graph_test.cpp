#include "onnx_graph.hpp"

#include <random>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "onnx_message.hpp"
#include "support/message_of.hpp"
#include "support/onnx_model.hpp"
#include "support/wire_message.hpp"

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

/// The test network with something more in its graph.
std::string WithMore(test::WireMessage const& more) {
    std::string const whole = test::MakeOnnx({});
    return test::WireMessage().Text(7, std::string(FindMessage(whole, 7)) + more.GetBytes()).GetBytes();
}

/// A node, as a field of a graph, with the attribute.
test::WireMessage NodeWith(test::WireMessage const& attribute) {
    return test::WireMessage().Sub(1, test::WireMessage().Text(4, "Constant").Sub(5, attribute));
}

TEST(OnnxGraph, ChecksTheTensorsAndNetworksInAttributesHoweverDeepTheyStand) {
    constexpr char const* message = "has a tensor with another number of values than its sizes say";
    auto const good = test::WireMessage().Integer(1, 2).Integer(2, 1).Text(9, "12345678");
    auto const bad = test::WireMessage().Integer(1, 2).Integer(2, 1).Text(9, "1234");
    EXPECT_THAT(ReadOnnxGraph(WithMore(NodeWith(test::WireMessage().Sub(5, good)))).inputShape,
                ElementsAre(0, 3, 8, 8));
    for (unsigned int const tensor : {5U, 10U}) {
        auto graph = NodeWith(test::WireMessage().Sub(tensor, bad));
        for (unsigned int const network : {6U, 11U, 6U}) {
            EXPECT_EQ(Refusal(WithMore(graph)), message) << tensor;
            graph = NodeWith(test::WireMessage().Sub(network, graph));
        }
        EXPECT_EQ(Refusal(WithMore(graph)), message) << tensor;
    }
    EXPECT_EQ(Refusal(WithMore(NodeWith(test::WireMessage().Sub(10, good).Sub(10, bad)))), message);
    EXPECT_EQ(Refusal(WithMore(test::WireMessage().Sub(5, bad))), message) << "among the weights";
}

TEST(OnnxGraph, RefusesNetworksThatStandInOneAnotherTooDeep) {
    test::WireMessage graph;
    for (int depth = 1; depth <= 8; ++depth) {
        graph = NodeWith(test::WireMessage().Sub(6, graph));
        EXPECT_THAT(ReadOnnxGraph(WithMore(graph)).inputShape, ElementsAre(0, 3, 8, 8)) << depth;
    }
    EXPECT_EQ(Refusal(WithMore(NodeWith(test::WireMessage().Sub(6, graph)))),
              "has networks that stand in one another too deep");
}

TEST(OnnxGraph, RefusesWhatTheBackEndWouldJoinToSomethingElse) {
    constexpr char const* message = "says something twice that an ONNX model says once";
    auto const tensor = test::WireMessage().Integer(1, 1).Integer(2, 1).FourBytes(4);
    auto const network = NodeWith({});
    EXPECT_EQ(Refusal(WithMore(NodeWith(test::WireMessage().Sub(5, tensor).Sub(5, tensor)))), message);
    EXPECT_EQ(Refusal(WithMore(NodeWith(test::WireMessage().Sub(6, network).Sub(6, network)))), message);
    EXPECT_EQ(Refusal(test::MakeOnnx({}) + test::MakeOnnx({})), message);
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
