#pragma once

#include <memory>
#include <string_view>

#include "network.hpp"

namespace qel::inference {

/// What makes networks. Lives in a shared object of its own, which is loaded when the first model is: a process without
/// models does not pay for it. Any thread.
class BackEnd {
public:
    virtual ~BackEnd() = default;

    /// Makes a network of the bytes of an ONNX file; throws std::runtime_error with the reason.
    virtual std::unique_ptr<Network> Load(std::string_view onnx) = 0;
};

/// The function that the shared object offers; the back end lives as long as the process.
using GetBackEndFunction = BackEnd*();
inline constexpr char const* GetBackEndName = "qel_inference_get_back_end";

}  // namespace qel::inference
