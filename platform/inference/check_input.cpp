#include "check_input.hpp"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace qel::inference {
namespace {

constexpr unsigned int MaximumSide = 16384;

std::string ShapeText(std::vector<std::size_t> const& shape) {
    std::string text;
    for (std::size_t const size : shape) text += (text.empty() ? "" : " x ") + (size == 0 ? "?" : std::to_string(size));
    return text.empty() ? "without axes" : text;
}

void CheckSize(std::string const& what, unsigned int width, unsigned int height, unsigned int channels) {
    if (width == 0 || height == 0 || width > MaximumSide || height > MaximumSide) {
        throw std::invalid_argument(what + " is " + std::to_string(width) + " x " + std::to_string(height) +
                                    " pixels; each side must be 1 to " + std::to_string(MaximumSide));
    }
    if (channels != 1 && channels != 3) {
        throw std::invalid_argument(what + " has " + std::to_string(channels) + " channels; it must have 1 or 3");
    }
}

}  // namespace

void CheckBatch(Tensor const& batch) {
    // Sizes are divided out of the number of values: their product might not fit.
    std::size_t rest = batch.values.size();
    bool fits = !batch.shape.empty() && rest > 0;
    for (std::size_t const size : batch.shape) {
        fits = fits && size > 0 && rest % size == 0;
        if (fits) rest /= size;
    }
    if (!fits || rest != 1) {
        throw std::invalid_argument("A batch of the shape " + ShapeText(batch.shape) + " cannot have " +
                                    std::to_string(batch.values.size()) +
                                    " values; it must have at least one sample and one value for each element");
    }
}

void CheckShape(std::vector<std::size_t> const& shape, std::vector<std::size_t> const& expected) {
    bool fits = shape.size() == expected.size();
    for (std::size_t i = 1; fits && i < shape.size(); ++i) fits = expected[i] == 0 || shape[i] == expected[i];
    if (fits) return;
    std::vector<std::size_t> taken = expected;
    if (!taken.empty()) taken[0] = 0;
    throw std::invalid_argument("The network takes batches of the shape " + ShapeText(taken) + ", not " +
                                ShapeText(shape));
}

void CheckPictures(boost::span<Picture const> pictures, PictureFormat const& format) {
    if (pictures.empty()) throw std::invalid_argument("There is no picture to run the network on");
    CheckSize("The picture format", format.width, format.height, format.channels);
    bool finite = std::isfinite(format.scale);
    for (std::size_t i = 0; i < format.channels; ++i) {
        finite = finite && std::isfinite(format.means[i]) && std::isfinite(format.deviations[i]);
        if (format.deviations[i] == 0) {
            throw std::invalid_argument("The deviation of channel " + std::to_string(i) + " must not be 0");
        }
    }
    if (!finite) throw std::invalid_argument("Scale, means and deviations of a picture format must be finite");
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        Picture const& picture = pictures[i];
        CheckSize("Picture " + std::to_string(i), picture.width, picture.height, picture.channels);
        if (picture.first == nullptr) {
            throw std::invalid_argument("Picture " + std::to_string(i) + " has no pixels");
        }
        if (static_cast<std::size_t>(std::abs(picture.stride)) < std::size_t{picture.width} * picture.channels) {
            throw std::invalid_argument("Picture " + std::to_string(i) + " has rows that overlap: stride " +
                                        std::to_string(picture.stride) + ", width " + std::to_string(picture.width));
        }
    }
}

}  // namespace qel::inference
