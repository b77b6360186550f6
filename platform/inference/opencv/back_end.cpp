// Networks run by OpenCV's module for deep neural networks, on the processor.

#include "back_end.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

#include "opencv/opencv.hpp"
#include "opencv/picture_blob.hpp"

namespace qel::inference {
namespace {

/// What OpenCV says went wrong, without where in its sources.
[[noreturn]] void Rethrow(cv::Exception const& error) {
    if (error.code == cv::Error::StsNoMem) throw std::bad_alloc();
    std::string reason = error.err.empty() ? error.what() : error.err;
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    reason.erase(reason.find_last_not_of(" >") + 1);
    throw std::runtime_error("OpenCV refuses it: " + reason);
}

std::vector<int> ToSizes(std::vector<std::size_t> const& shape) {
    std::vector<int> sizes;
    for (std::size_t const size : shape) {
        if (size > std::size_t{1} << 30U)
            throw std::runtime_error("an axis of " + std::to_string(size) + " is too long");
        sizes.push_back(static_cast<int>(size));
    }
    return sizes;
}

Tensor ToTensor(cv::Mat const& output) {
    cv::Mat values;
    output.convertTo(values, CV_32F);
    Tensor tensor;
    for (int axis = 0; axis < values.dims; ++axis) tensor.shape.push_back(static_cast<std::size_t>(values.size[axis]));
    float const* const first = values.ptr<float>();
    tensor.values.assign(first, first + values.total());
    return tensor;
}

class OpenCvNetwork final : public Network {
public:
    explicit OpenCvNetwork(std::string_view onnx) {
        try {
            network_ = cv::dnn::readNetFromONNX(onnx.data(), onnx.size());
            network_.setPreferableBackend(cv::dnn::DNN_BACKEND_OPENCV);
            network_.setPreferableTarget(cv::dnn::DNN_TARGET_CPU);
            outputs_ = network_.getUnconnectedOutLayersNames();
        } catch (cv::Exception const& error) {
            Rethrow(error);
        }
    }

    std::vector<Tensor> Run(Tensor const& batch) override {
        // OpenCV takes no constant pixels; it does not write to its input.
        return Run(cv::Mat(ToSizes(batch.shape), CV_32F, const_cast<float*>(batch.values.data())));
    }

    std::vector<Tensor> Run(boost::span<Picture const> pictures, PictureFormat const& format) override {
        try {
            MakeBlob(pictures, format, blob_);
        } catch (cv::Exception const& error) {
            Rethrow(error);
        }
        return Run(blob_);
    }

private:
    std::vector<Tensor> Run(cv::Mat const& blob) {
        try {
            network_.setInput(blob);
            network_.forward(results_, outputs_);
            std::vector<Tensor> tensors;
            for (cv::Mat const& result : results_) tensors.push_back(ToTensor(result));
            return tensors;
        } catch (cv::Exception const& error) {
            Rethrow(error);
        }
    }

    cv::dnn::Net network_;
    std::vector<cv::String> outputs_;
    cv::Mat blob_;
    std::vector<cv::Mat> results_;
};

class OpenCvBackEnd final : public BackEnd {
public:
    OpenCvBackEnd() {
        // Networks run side by side on the threads of those who ask; threads of OpenCV's own would only contend.
        cv::setNumThreads(1);
        // What goes wrong is told by exceptions; the standard error output is the host's.
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    }

    std::unique_ptr<Network> Load(std::string_view onnx) override { return std::make_unique<OpenCvNetwork>(onnx); }
};

}  // namespace
}  // namespace qel::inference

extern "C" __attribute__((visibility("default"))) qel::inference::BackEnd* qel_inference_get_back_end() {
    // Never destroyed: networks may be held longer than static objects live.
    static auto* const backEnd = new qel::inference::OpenCvBackEnd;
    return backEnd;
}
