#include "qel/inference/model.hpp"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <new>
#include <utility>

#include "check_input.hpp"
#include "model_impl.hpp"
#include "qel/inference/inference_error.hpp"

namespace qel::inference {
namespace {

[[noreturn]] void Fail(Model::Impl const& model, std::string const& reason) {
    throw InferenceError("Model " + model.name + " (" + model.file.string() + ") " + reason);
}

/// Appends the outputs for `samples` samples to those of the samples before.
void Append(Model::Impl const& model, std::vector<Tensor>& all, std::vector<Tensor> part, std::size_t samples) {
    for (Tensor const& output : part) {
        if (!output.shape.empty() && output.shape[0] == samples) continue;
        Fail(model, "gives outputs that do not count the " + std::to_string(samples) +
                        " samples of the batch: it may have been made for batches of another size, see "
                        "\"max_batch_size\" of its metadata");
    }
    if (all.empty()) {
        all = std::move(part);
        return;
    }
    if (part.size() != all.size()) Fail(model, "gives another number of outputs for a part of the batch");
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i].shape[0] += samples;
        all[i].values.insert(all[i].values.end(), part[i].values.begin(), part[i].values.end());
    }
}

/// Runs a batch in parts of at most the model's batch size. run: (first sample, number of samples) -> outputs.
template <class Run>
std::vector<Tensor> RunInParts(Model::Impl const& model, std::size_t samples, Run run) {
    std::vector<Tensor> outputs;
    std::size_t const most = std::max<std::size_t>(model.metadata.GetMaxBatchSize(), 1);
    std::lock_guard<std::mutex> const lock(model.networkMutex);
    for (std::size_t first = 0; first < samples; first += most) {
        std::size_t const count = std::min(most, samples - first);
        std::vector<Tensor> part;
        try {
            part = run(first, count);
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const& error) {
            Fail(model, std::string("cannot be run: ") + error.what());
        }
        Append(model, outputs, std::move(part), count);
    }
    return outputs;
}

}  // namespace

Model::Model(std::unique_ptr<Impl const> impl) : impl_(std::move(impl)) {}

Model::~Model() = default;

std::string const& Model::GetName() const noexcept { return impl_->name; }

Metadata const& Model::GetMetadata() const noexcept { return impl_->metadata; }

std::string const& Model::GetMetadataText() const noexcept { return impl_->metadataText; }

std::vector<std::string> const& Model::GetLabels() const noexcept { return impl_->labels; }

std::vector<std::size_t> const& Model::GetInputShape() const noexcept { return impl_->inputShape; }

std::vector<Tensor> Model::Run(Tensor const& batch) const {
    CheckBatch(batch);
    CheckShape(batch.shape, impl_->inputShape);
    if (batch.shape[0] <= impl_->metadata.GetMaxBatchSize()) {
        return RunInParts(*impl_, batch.shape[0], [&](std::size_t, std::size_t) { return impl_->network->Run(batch); });
    }
    std::size_t const sampleSize = batch.values.size() / batch.shape[0];
    return RunInParts(*impl_, batch.shape[0], [&](std::size_t first, std::size_t count) {
        auto const begin = batch.values.begin() + static_cast<std::ptrdiff_t>(first * sampleSize);
        Tensor part{batch.shape, {begin, begin + static_cast<std::ptrdiff_t>(count * sampleSize)}};
        part.shape[0] = count;
        return impl_->network->Run(part);
    });
}

std::vector<Tensor> Model::Run(boost::span<Picture const> pictures, PictureFormat const& format) const {
    CheckPictures(pictures, format);
    CheckShape({pictures.size(), format.channels, format.height, format.width}, impl_->inputShape);
    return RunInParts(*impl_, pictures.size(), [&](std::size_t first, std::size_t count) {
        return impl_->network->Run(pictures.subspan(first, count), format);
    });
}

}  // namespace qel::inference
