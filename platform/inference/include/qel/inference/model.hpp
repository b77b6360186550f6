#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/core/span.hpp>

#include "qel/inference/export.hpp"
#include "qel/inference/metadata.hpp"
#include "qel/inference/picture.hpp"
#include "qel/inference/tensor.hpp"

namespace qel::inference {

/// A network that is loaded, with all that stood in its folder at that moment: metadata and labels belong to it.
///
/// Never changes: when the files do, the manager makes another one. Any thread; runs of one model wait for each other.
class QEL_INFERENCE_EXPORT Model {
public:
    struct Impl;

    explicit Model(std::unique_ptr<Impl const> impl);
    Model(Model const&) = delete;
    Model& operator=(Model const&) = delete;
    ~Model();

    std::string const& GetName() const noexcept;
    Metadata const& GetMetadata() const noexcept;
    /// The text of "metadata.json", checked by serialize::CheckJson, for whoever needs further members of it.
    std::string const& GetMetadataText() const noexcept;
    /// The lines of "labels.txt" beside the model; none where there is no such file.
    std::vector<std::string> const& GetLabels() const noexcept;

    /// The size of each axis of what the network takes, 0 where it is left open; the first axis counts the samples.
    std::vector<std::size_t> const& GetInputShape() const noexcept;

    /// Runs the network on a batch: the first axis of the tensor counts the samples. Gives the network's outputs, the
    /// first axis of each counting the samples as well. More samples than the metadata's batch size run in several
    /// parts. Throws std::invalid_argument for a tensor without samples or whose number of values does not fit its
    /// shape, InferenceError where the network cannot take the shape or does not give an output for each sample.
    std::vector<Tensor> Run(Tensor const& batch) const;
    /// The same on pictures, each a sample, which are brought into the format first. Throws std::invalid_argument also
    /// for a picture or format that is empty, has not 1 or 3 channels, or is larger than 16384 x 16384 pixels, and for
    /// a deviation that is 0 or a number in the format that is not finite.
    std::vector<Tensor> Run(boost::span<Picture const> pictures, PictureFormat const& format) const;

private:
    std::unique_ptr<Impl const> impl_;
};

}  // namespace qel::inference
