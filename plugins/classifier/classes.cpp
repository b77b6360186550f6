#include "classes.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "qel/serialize/check_json.hpp"

namespace qel::classifier {
namespace {

namespace json = boost::json;
using inference::ChannelOrder;

[[noreturn]] void Refuse(std::string_view member, std::string const& expected) {
    throw std::invalid_argument("\"" + std::string(member) + "\" of the metadata must be " + expected);
}

/// The members of the metadata; what is missing stands at its default.
class Members {
public:
    explicit Members(std::string const& text) {
        json::parse_options options;
        options.max_depth = serialize::MaximumDepth;
        document_ = json::parse(text, {}, options);
        if (!document_.is_object()) throw std::invalid_argument("The metadata must be an object");
    }

    double Number(std::string_view name, double otherwise) const {
        json::value const* const value = Find(name);
        return value == nullptr ? otherwise : ToNumber(name, *value);
    }
    /// A size in pixels or channels; 0 where there is none.
    unsigned int Size(std::string_view name) const {
        if (Find(name) == nullptr) return 0;
        double const size = Number(name, 0);
        if (size < 1 || size > 16384 || size != std::floor(size)) Refuse(name, "an integer from 1 to 16384");
        return static_cast<unsigned int>(size);
    }
    /// A number for each channel.
    void Numbers(std::string_view name, unsigned int channels, std::array<float, 3>& numbers) const {
        json::value const* const value = Find(name);
        if (value == nullptr) return;
        if (!value->is_array() || value->as_array().size() != channels) {
            Refuse(name, "a list of " + std::to_string(channels) + " numbers, one for each channel");
        }
        for (unsigned int i = 0; i < channels; ++i) {
            numbers[i] = static_cast<float>(ToNumber(name, value->as_array()[i]));
        }
    }
    /// Whether a text is the second of two; the first is the default.
    bool IsSecond(std::string_view name, std::string_view first, std::string_view second) const {
        json::value const* const value = Find(name);
        if (value == nullptr) return false;
        json::string const* const text = value->if_string();
        if (text != nullptr && *text == first) return false;
        if (text != nullptr && *text == second) return true;
        Refuse(name, "\"" + std::string(first) + "\" or \"" + std::string(second) + "\"");
    }

private:
    json::value const* Find(std::string_view name) const { return document_.as_object().if_contains(name); }

    static double ToNumber(std::string_view name, json::value const& value) {
        json::error_code error;
        double const number = value.is_number() ? value.to_number<double>(error) : 0;
        // As floats they must be finite too.
        if (!value.is_number() || error || !(std::abs(number) <= std::numeric_limits<float>::max())) {
            Refuse(name, "a number that fits into 32 bits");
        }
        return number;
    }

    json::value document_;
};

/// A size that the metadata gives, or that the network does.
unsigned int SizeOf(Members const& members, std::string_view name, std::vector<std::size_t> const& shape,
                    std::size_t axis, unsigned int otherwise) {
    unsigned int const given = members.Size(name);
    if (given != 0) return given;
    std::size_t const taken = shape.size() == 4 ? shape[axis] : 0;
    if (taken != 0 && taken <= 16384) return static_cast<unsigned int>(taken);
    if (otherwise == 0) {
        throw std::invalid_argument("\"" + std::string(name) +
                                    "\" is missing in the metadata, and the network leaves it open");
    }
    return otherwise;
}

float Softmax(float const* scores, std::size_t classes, std::size_t best) {
    double sum = 0;
    for (std::size_t i = 0; i < classes; ++i) sum += std::exp(static_cast<double>(scores[i]) - scores[best]);
    return static_cast<float>(1 / sum);
}

}  // namespace

ModelInput ReadModelInput(std::string const& metadata, std::vector<std::size_t> const& inputShape) {
    Members const members(metadata);
    ModelInput input;
    inference::PictureFormat& format = input.format;
    format.width = SizeOf(members, "input_width", inputShape, 3, 0);
    format.height = SizeOf(members, "input_height", inputShape, 2, 0);
    format.channels = SizeOf(members, "input_channels", inputShape, 1, 3);
    if (format.channels != 1 && format.channels != 3) Refuse("input_channels", "1 or 3");
    format.order = members.IsSecond("channel_order", "rgb", "bgr") ? ChannelOrder::Bgr : ChannelOrder::Rgb;
    format.scale = static_cast<float>(members.Number("scale", 1.0 / 255));
    members.Numbers("means", format.channels, format.means);
    members.Numbers("standard_deviations", format.channels, format.deviations);
    for (unsigned int i = 0; i < format.channels; ++i) {
        if (format.deviations[i] == 0) Refuse("standard_deviations", "other than 0");
    }
    input.areLogits = members.IsSecond("output", "probabilities", "logits");
    return input;
}

std::vector<Verdict> FindLikeliest(inference::Tensor const& output, std::size_t classes, bool areLogits) {
    std::size_t const samples = output.shape.empty() ? 0 : output.shape[0];
    if (samples == 0 || output.values.size() != samples * classes) {
        throw std::invalid_argument("The network gives " + std::to_string(output.values.size()) + " values for " +
                                    std::to_string(samples) + " pictures, and there are " + std::to_string(classes) +
                                    " labels");
    }
    for (float const value : output.values) {
        if (std::isfinite(value) && (areLogits || (value >= -1e-3F && value <= 1 + 1e-3F))) continue;
        throw std::invalid_argument(
            "The network gives " + std::to_string(value) +
            ", which is no probability: say \"output\": \"logits\" in its metadata if it has no "
            "softmax of its own");
    }
    std::vector<Verdict> verdicts;
    for (std::size_t i = 0; i < samples; ++i) {
        float const* const scores = output.values.data() + i * classes;
        auto const best = static_cast<std::size_t>(std::max_element(scores, scores + classes) - scores);
        float const confidence = areLogits ? Softmax(scores, classes, best) : std::clamp(scores[best], 0.0F, 1.0F);
        verdicts.push_back({best, confidence});
    }
    return verdicts;
}

Classes::Classes(std::shared_ptr<inference::Model const> model) : model_(std::move(model)) {
    if (model_->GetLabels().empty()) throw std::invalid_argument("There is no file \"labels.txt\" beside the model");
    input_ = ReadModelInput(model_->GetMetadataText(), model_->GetInputShape());
}

std::vector<Verdict> Classes::Classify(boost::span<inference::Picture const> pictures) const {
    auto const outputs = model_->Run(pictures, input_.format);
    if (outputs.empty()) throw std::invalid_argument("The network has no output");
    return FindLikeliest(outputs.front(), model_->GetLabels().size(), input_.areLogits);
}

}  // namespace qel::classifier
