#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qel::inference {

/// The order of the samples of a colour pixel.
enum class ChannelOrder : std::uint8_t { Rgb, Bgr };

/// A view on 8-bit pixels that somebody else owns: grey, one sample a pixel, or in colour, three.
struct Picture {
    std::uint8_t const* first = nullptr;  ///< the first sample of the top row
    std::ptrdiff_t stride = 0;            ///< bytes from a row to the next; may be padded, may be negative
    unsigned int width = 0;               ///< pixels
    unsigned int height = 0;
    unsigned int channels = 1;               ///< 1 or 3
    ChannelOrder order = ChannelOrder::Rgb;  ///< of three channels
};

/// How a network wants pictures: resized to its input size, then for each channel (value * scale - mean) / deviation,
/// laid out as samples x channels x height x width.
struct PictureFormat {
    unsigned int width = 0;  ///< pixels
    unsigned int height = 0;
    unsigned int channels = 3;               ///< 1 or 3; pictures of the other kind are converted
    ChannelOrder order = ChannelOrder::Rgb;  ///< of the three channels, means and deviations
    float scale = 1;
    std::array<float, 3> means{};
    std::array<float, 3> deviations{1, 1, 1};

    friend bool operator==(PictureFormat const&, PictureFormat const&) = default;
};

}  // namespace qel::inference
