#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <boost/core/span.hpp>

#include "qel/inference/model.hpp"
#include "qel/inference/picture.hpp"
#include "qel/inference/tensor.hpp"

namespace qel::classifier {

/// How a network wants its pictures and what its numbers are, as its metadata says.
struct ModelInput {
    inference::PictureFormat format;
    /// Whether the outputs are to go through a softmax before they are shares of 1.
    bool areLogits = false;
};

/// Reads the members that this algorithm has for "metadata.json": "input_width", "input_height", "input_channels",
/// "channel_order", "scale", "means", "standard_deviations" and "output". inputShape: what the network says itself, as
/// Model::GetInputShape; it stands for sizes that are missing.
/// Throws std::invalid_argument for a member of another type or out of range, and for a size that nobody tells.
ModelInput ReadModelInput(std::string const& metadata, std::vector<std::size_t> const& inputShape);

/// A class and how sure the network is of it, 0 to 1.
struct Verdict {
    std::size_t index = 0;
    float confidence = 0;
};

/// The likeliest class of each sample. Throws std::invalid_argument unless the tensor has as many values for each
/// sample as there are classes, all of them finite and, unless they are logits, from 0 to 1.
std::vector<Verdict> FindLikeliest(inference::Tensor const& output, std::size_t classes, bool areLogits);

/// A model with what its files say of its pictures and classes.
class Classes {
public:
    /// Throws std::invalid_argument for a model without labels, or as ReadModelInput.
    explicit Classes(std::shared_ptr<inference::Model const> model);

    unsigned int GetChannels() const noexcept { return input_.format.channels; }
    std::string const& GetLabel(Verdict const& verdict) const { return model_->GetLabels().at(verdict.index); }

    /// The likeliest class of each picture. Throws as FindLikeliest, and what the model throws.
    std::vector<Verdict> Classify(boost::span<inference::Picture const> pictures) const;

private:
    std::shared_ptr<inference::Model const> model_;
    ModelInput input_;
};

}  // namespace qel::classifier
