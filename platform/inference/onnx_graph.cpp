#include "onnx_graph.hpp"

#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>

#include "onnx_message.hpp"
#include "onnx_tensor.hpp"

namespace qel::inference {
namespace {

// How deep a network may hold others, as the bodies of loops and conditions.
constexpr int MaximumDepth = 8;

void CheckGraph(std::string_view graph, int depth);

/// Checks the tensors and networks that stand in an attribute of a node as its constants.
void CheckAttribute(std::string_view attribute, int depth) {
    for (std::uint64_t const single : {5U, 6U}) (void)FindMessage(attribute, single);
    OnnxField field;
    for (OnnxMessage reader(attribute); reader.Next(field);) {
        if (field.IsBytes(5) || field.IsBytes(10)) CheckOnnxTensor(field.bytes);
        if (field.IsBytes(6) || field.IsBytes(11)) CheckGraph(field.bytes, depth + 1);
    }
}

void CheckNode(std::string_view node, int depth) {
    OnnxField field;
    for (OnnxMessage reader(node); reader.Next(field);) {
        if (field.IsBytes(5)) CheckAttribute(field.bytes, depth);
    }
}

void CheckGraph(std::string_view graph, int depth) {
    if (depth > MaximumDepth) throw std::runtime_error("has networks that stand in one another too deep");
    OnnxField field;
    for (OnnxMessage reader(graph); reader.Next(field);) {
        if (field.IsBytes(1)) CheckNode(field.bytes, depth);
        if (field.IsBytes(5)) CheckOnnxTensor(field.bytes);
    }
}

struct Graph {
    std::vector<std::string_view> inputs;  ///< ValueInfoProto
    std::set<std::string_view> initializers;
    std::size_t nodes = 0, outputs = 0;
};

Graph ReadGraph(std::string_view bytes) {
    Graph graph;
    OnnxField field;
    for (OnnxMessage reader(bytes); reader.Next(field);) {
        if (field.IsBytes(1)) ++graph.nodes;
        if (field.IsBytes(5)) graph.initializers.insert(FindText(field.bytes, 8));
        if (field.IsBytes(11)) graph.inputs.push_back(field.bytes);
        if (field.IsBytes(12)) ++graph.outputs;
    }
    return graph;
}

std::vector<std::size_t> ReadShape(std::string_view input) {
    std::string_view const tensor = FindMessage(FindMessage(input, 2), 1);
    constexpr std::uint64_t floats = 1;
    if (FindInteger(tensor, 1) != floats) throw std::runtime_error("takes other numbers than 32-bit floats");
    std::vector<std::size_t> shape;
    OnnxField field;
    for (OnnxMessage reader(FindMessage(tensor, 2)); reader.Next(field);) {
        if (!field.IsBytes(1)) continue;
        std::uint64_t const size = FindInteger(field.bytes, 1);
        // Some tools write -1 for an axis that they leave open.
        bool const isOpen = size > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
        shape.push_back(isOpen ? 0 : size);
    }
    if (shape.empty() || shape.size() > 8) throw std::runtime_error("takes a tensor that has not 1 to 8 axes");
    return shape;
}

}  // namespace

OnnxGraph ReadOnnxGraph(std::string_view bytes) {
    if (bytes.empty()) throw std::runtime_error("is empty");
    std::string_view const network = FindMessage(bytes, 7);
    Graph const graph = ReadGraph(network);
    if (graph.nodes == 0 || graph.outputs == 0) throw std::runtime_error("is no ONNX model: it has no network");
    // Older files list the weights among the inputs.
    std::vector<std::string_view> inputs;
    for (std::string_view const input : graph.inputs) {
        if (!graph.initializers.contains(FindText(input, 1))) inputs.push_back(input);
    }
    if (inputs.size() != 1) {
        throw std::runtime_error("has " + std::to_string(inputs.size()) + " inputs; a network must have one");
    }
    CheckGraph(network, 0);
    return {ReadShape(inputs[0])};
}

}  // namespace qel::inference
