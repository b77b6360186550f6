#include "background_model.hpp"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace qel::motion {
namespace {

/// The first byte of row y; the stride may be negative.
std::uint8_t const* RowOf(std::uint8_t const* first, std::ptrdiff_t stride, unsigned int y) {
    return first + static_cast<std::ptrdiff_t>(y) * stride;
}

std::size_t EvenWidth(unsigned int width) { return std::size_t{width} + (width & 1U); }

}  // namespace

void BackgroundModel::Reset() {
    width_ = 0;
    height_ = 0;
}

void BackgroundModel::Apply(Picture const& picture, Parameters const& parameters, std::uint32_t* mask,
                            std::uint32_t* strong) {
    bool const coloured = picture.chroma != nullptr;
    bool const starts = picture.width != width_ || picture.height != height_ || coloured != coloured_;
    if (starts) clock_ = {};
    clock_.coloured = coloured;
    clock_.drift = starts ? 0 : MeasureDrift(picture);
    FrameRule const rule = MakeFrameRule(parameters, clock_);
    if (starts) Start(picture, rule);

    std::size_t far = 0;
    for (unsigned int y = 0; y < height_; y += 2) far += ApplyRowPair(picture, y, rule, mask, strong);

    std::size_t const pixels = std::size_t{width_} * height_;
    double const share = std::clamp(parameters.globalChange, 0.1, 1.0);
    clock_.globalChange = static_cast<double>(far) > share * static_cast<double>(pixels);
    ++clock_.frame;
    if (clock_.globalChange) {
        std::size_t const words = (std::size_t{width_} + 31) / 32 * height_;
        std::fill_n(mask, words, 0U);
        if (strong != nullptr) std::fill_n(strong, words, 0U);
    }
}

int BackgroundModel::MeasureDrift(Picture const& picture) const {
    constexpr unsigned int Grid = 8;
    int sum = 0, samples = 0;
    for (unsigned int y = 0; y < height_; y += Grid) {
        std::uint8_t const* row = RowOf(picture.luma, picture.lumaStride, y);
        std::int16_t const* mean = mean_.data() + std::size_t{y} * width_;
        for (unsigned int x = 0; x < width_; x += Grid) {
            int const difference = (row[x] << FrameRule::LevelBits) - mean[x];
            bool const near = std::abs(difference) < FrameRule::LargestDrift;
            sum += near ? difference / 16 : 0;  // a million samples stay within an int
            samples += near ? 1 : 0;
        }
    }
    return samples > 0 ? sum / samples * 16 : 0;
}

void BackgroundModel::Start(Picture const& picture, FrameRule const& rule) {
    width_ = picture.width;
    height_ = picture.height;
    coloured_ = picture.chroma != nullptr;
    std::size_t const pixels = std::size_t{width_} * height_;
    std::size_t const evenWidth = EvenWidth(width_);

    mean_.resize(pixels);
    for (unsigned int y = 0; y < height_; ++y) {
        std::uint8_t const* row = RowOf(picture.luma, picture.lumaStride, y);
        std::transform(row, row + width_, mean_.begin() + static_cast<std::ptrdiff_t>(std::size_t{y} * width_),
                       [](std::uint8_t level) { return static_cast<std::int16_t>(level << FrameRule::LevelBits); });
    }
    candidate_ = mean_;
    spread_.assign(pixels, rule.firstSpread);
    hits_.assign(pixels, 0);
    candidateHits_.assign(pixels, 0);
    chromaDistance_.assign(evenWidth, 0);
    flags_.assign(2 * evenWidth, 0);
    chromaMean_.clear();
    if (!coloured_) return;
    for (unsigned int y = 0; y < (height_ + 1) / 2; ++y) {
        std::uint8_t const* row = RowOf(picture.chroma, picture.chromaStride, y);
        std::transform(row, row + evenWidth, std::back_inserter(chromaMean_),
                       [](std::uint8_t level) { return static_cast<std::int16_t>(level << FrameRule::LevelBits); });
    }
}

std::size_t BackgroundModel::ApplyRowPair(Picture const& picture, unsigned int y, FrameRule const& rule,
                                          std::uint32_t* mask, std::uint32_t* strong) {
    PixelRows const& rows = *rows_;
    std::size_t const evenWidth = EvenWidth(width_);
    std::size_t const stride = (std::size_t{width_} + 31) / 32;
    std::uint8_t const* chroma = nullptr;
    std::int16_t* chromaMean = nullptr;
    if (coloured_) {
        chroma = RowOf(picture.chroma, picture.chromaStride, y / 2);
        chromaMean = chromaMean_.data() + std::size_t{y / 2} * evenWidth;
        rows.measureChroma(chroma, chromaMean, chromaDistance_.data(), evenWidth);
    }

    std::size_t far = 0;
    std::uint8_t* flags = flags_.data();
    for (unsigned int row = y; row < std::min(y + 2, height_); ++row) {
        std::size_t const first = std::size_t{row} * width_;
        flags = flags_.data() + (row - y) * evenWidth;
        ModelRow const model{&mean_[first], &spread_[first], &hits_[first], &candidate_[first], &candidateHits_[first]};
        far += rows.applyLuma(RowOf(picture.luma, picture.lumaStride, row), chromaDistance_.data(), model, rule, flags,
                              width_);
        flags[evenWidth - 1] = flags[width_ - 1];  // an odd row's last chroma pair has one pixel: count it twice
        PackRow(flags, Foreground, mask + row * stride, width_);
        if (strong != nullptr) PackRow(flags, Strong, strong + row * stride, width_);
    }
    if (coloured_) rows.learnChroma(chroma, chromaMean, flags_.data(), flags, rule, evenWidth);
    return far;
}

}  // namespace qel::motion
