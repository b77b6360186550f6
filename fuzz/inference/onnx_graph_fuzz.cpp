// A network from anywhere: the shape of its input is told, or the file is refused with a reason.
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "check.hpp"
#include "onnx_graph.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    try {
        auto const graph = qel::inference::ReadOnnxGraph({reinterpret_cast<char const*>(data), size});
        qel::fuzz::Check(!graph.inputShape.empty() && graph.inputShape.size() <= 8, "a network takes 1 to 8 axes");
    } catch (std::runtime_error const& error) {
        qel::fuzz::Check(*error.what() != '\0', "a refusal has a reason");
    }
    return 0;
}
