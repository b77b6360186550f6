#include "support/onnx_model.hpp"

#include <cstdint>
#include <cstring>
#include <string_view>

#include "support/wire_message.hpp"

// The protocol buffers of ONNX, as far as these networks go. Numbers of fields are those of onnx.proto.

namespace qel::test {
namespace {

using Message = WireMessage;

constexpr std::uint64_t FloatType = 1;

Message Weights(std::string_view name, std::vector<std::uint64_t> const& dimensions, std::vector<float> const& values) {
    Message tensor;
    for (std::uint64_t const size : dimensions) tensor.Integer(1, size);
    tensor.Integer(2, FloatType).Text(8, name);
    std::string raw(values.size() * sizeof(float), '\0');
    if (!values.empty()) std::memcpy(raw.data(), values.data(), raw.size());
    return tensor.Text(9, raw);
}

Message Value(std::string_view name, std::vector<std::uint64_t> const& dimensions,
              std::uint64_t elementType = FloatType) {
    Message shape;
    shape.Sub(1, Message().Text(2, "samples"));
    for (std::uint64_t const size : dimensions) shape.Sub(1, Message().Integer(1, size));
    Message const type = Message().Sub(1, Message().Integer(1, elementType).Sub(2, shape));
    return Message().Text(1, name).Sub(2, type);
}

Message Node(std::string_view kind, std::vector<std::string> const& inputs, std::string_view output) {
    Message node;
    for (std::string const& input : inputs) node.Text(1, input);
    return node.Text(2, output).Text(3, output).Text(4, kind);
}

Message IntegerAttribute(std::string_view name, std::uint64_t value) {
    constexpr std::uint64_t integerKind = 2;
    return Message().Text(1, name).Integer(3, value).Integer(20, integerKind);
}

}  // namespace

std::string MakeOnnx(MeanClassifier const& network) {
    std::uint64_t const classes = network.weights.size();
    std::vector<float> weights;
    for (auto const& row : network.weights) weights.insert(weights.end(), row.begin(), row.end());
    Message graph;
    graph.Sub(1, Node("GlobalAveragePool", {"pixels"}, "means"));
    graph.Sub(1, Node("Flatten", {"means"}, "row").Sub(5, IntegerAttribute("axis", network.flattenAxis)));
    graph.Sub(1, Node("Gemm", {"row", "weights", "biases"}, network.softmax ? "sums" : "scores")
                     .Sub(5, IntegerAttribute("transB", 1)));
    if (network.softmax) graph.Sub(1, Node("Softmax", {"sums"}, "scores").Sub(5, IntegerAttribute("axis", 1)));
    graph.Text(2, "means");
    graph.Sub(5, Weights("weights", {classes, network.channels}, weights));
    graph.Sub(5, Weights("biases", {classes}, std::vector<float>(classes, 0)));
    graph.Sub(11, Value("pixels", {network.channels, network.height, network.width}, network.inputElementType));
    if (network.weightsAreInputs) graph.Sub(11, Value("weights", {network.channels})).Sub(11, Value("biases", {}));
    for (unsigned int i = 0; i < network.extraInputs; ++i) graph.Sub(11, Value("more" + std::to_string(i), {1}));
    graph.Sub(12, Value("scores", {classes}));
    return Message()
        .Integer(1, 8)
        .Text(2, "qel tests")
        .Sub(7, graph)
        .Sub(8, Message().Text(1, "").Integer(2, 11))
        .GetBytes();
}

}  // namespace qel::test
