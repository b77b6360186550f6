#include "support/peers.hpp"

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace qel::benchmarks {
namespace {

bool Get(algorithm::BitMask const& mask, unsigned int x, unsigned int y) {
    return (mask.GetData()[y * mask.GetStride() + x / 32] >> (31 - x % 32) & 1U) != 0;
}

template <class Pixel>
bool EqualInside(algorithm::BitMask const& mask, unsigned int margin, Pixel pixel) {
    for (unsigned int y = margin; y + margin < mask.GetSize().height; ++y) {
        for (unsigned int x = margin; x + margin < mask.GetSize().width; ++x) {
            if (Get(mask, x, y) != pixel(x, y)) return false;
        }
    }
    return true;
}

}  // namespace

PixPtr ToPix(algorithm::BitMask const& mask) {
    PixPtr pix(pixCreate(static_cast<int>(mask.GetSize().width), static_cast<int>(mask.GetSize().height), 1));
    std::copy(mask.GetData().begin(), mask.GetData().end(), pixGetData(pix.get()));
    return pix;
}

cv::Mat ToMat(algorithm::BitMask const& mask) {
    cv::Mat image(static_cast<int>(mask.GetSize().height), static_cast<int>(mask.GetSize().width), CV_8UC1);
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            image.at<unsigned char>(y, x) =
                Get(mask, static_cast<unsigned int>(x), static_cast<unsigned int>(y)) ? 255 : 0;
        }
    }
    return image;
}

bool Equal(algorithm::BitMask const& mask, Pix* pix, unsigned int margin) {
    l_uint32 const* const words = pixGetData(pix);
    std::size_t const stride = static_cast<std::size_t>(pixGetWpl(pix));
    return EqualInside(mask, margin, [&](unsigned int x, unsigned int y) {
        return (words[y * stride + x / 32] >> (31 - x % 32) & 1U) != 0;
    });
}

bool Equal(algorithm::BitMask const& mask, cv::Mat const& image, unsigned int margin) {
    return EqualInside(mask, margin, [&](unsigned int x, unsigned int y) {
        return image.at<unsigned char>(static_cast<int>(y), static_cast<int>(x)) != 0;
    });
}

void Require(bool condition, std::string const& message) {
    if (condition) return;
    std::cerr << "not equal: " << message << '\n';
    std::exit(1);
}

}  // namespace qel::benchmarks
