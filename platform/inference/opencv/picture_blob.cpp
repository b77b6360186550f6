#include "opencv/picture_blob.hpp"

#include <cstring>

namespace qel::inference {
namespace {

/// The picture as OpenCV sees it: in place, or copied where the rows run upwards.
cv::Mat View(Picture const& picture) {
    auto const width = static_cast<int>(picture.width), height = static_cast<int>(picture.height);
    int const type = picture.channels == 1 ? CV_8UC1 : CV_8UC3;
    if (picture.stride >= 0) {
        // OpenCV takes no constant pixels; nothing here writes to them.
        return {height, width, type, const_cast<std::uint8_t*>(picture.first),
                static_cast<std::size_t>(picture.stride)};
    }
    cv::Mat copy(height, width, type);
    for (int y = 0; y < height; ++y) {
        std::memcpy(copy.ptr(y), picture.first + picture.stride * y, std::size_t{picture.width} * picture.channels);
    }
    return copy;
}

void ConvertChannels(cv::Mat const& from, Picture const& picture, PictureFormat const& format, cv::Mat& to) {
    bool const fromRgb = picture.order == ChannelOrder::Rgb;
    if (picture.channels == format.channels) {
        if (format.channels == 1 || picture.order == format.order) {
            to = from;
        } else {
            cv::cvtColor(from, to, cv::COLOR_RGB2BGR);  // the same both ways
        }
    } else if (format.channels == 1) {
        cv::cvtColor(from, to, fromRgb ? cv::COLOR_RGB2GRAY : cv::COLOR_BGR2GRAY);
    } else {
        cv::cvtColor(from, to, cv::COLOR_GRAY2RGB);
    }
}

/// Takes interleaved pixels apart into one plane a channel, normalised.
void Normalise(cv::Mat const& pixels, PictureFormat const& format, float* target) {
    unsigned int const channels = format.channels;
    for (unsigned int channel = 0; channel < channels; ++channel) {
        float const scale = format.scale / format.deviations[channel];
        float const offset = -format.means[channel] / format.deviations[channel];
        for (unsigned int y = 0; y < format.height; ++y) {
            std::uint8_t const* row = pixels.ptr(static_cast<int>(y)) + channel;
            for (unsigned int x = 0; x < format.width; ++x, row += channels) {
                *target++ = static_cast<float>(*row) * scale + offset;
            }
        }
    }
}

}  // namespace

void MakeBlob(boost::span<Picture const> pictures, PictureFormat const& format, cv::Mat& blob) {
    auto const width = static_cast<int>(format.width), height = static_cast<int>(format.height);
    blob.create(std::vector<int>{static_cast<int>(pictures.size()), static_cast<int>(format.channels), height, width},
                CV_32F);
    cv::Mat resized, converted;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        cv::Mat const pixels = View(pictures[i]);
        bool const shrinks = pixels.cols > width && pixels.rows > height;
        cv::resize(pixels, resized, {width, height}, 0, 0, shrinks ? cv::INTER_AREA : cv::INTER_LINEAR);
        ConvertChannels(resized, pictures[i], format, converted);
        Normalise(converted, format, blob.ptr<float>(static_cast<int>(i)));
    }
}

}  // namespace qel::inference
