#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "background_model.hpp"

namespace qel::motion {

/// The background model's rule, one pixel after the other and with branches: slow, obvious, bit for bit the same masks.
class ReferenceBackgroundModel {
public:
    void Apply(Picture const& picture, Parameters const& parameters, std::uint32_t* mask, std::uint32_t* strong) {
        picture_ = picture;
        bool const coloured = picture.chroma != nullptr;
        if (picture.width != width_ || picture.height != height_ || coloured != coloured_) Start();
        clock_.drift = clock_.frame == 0 ? 0 : Drift();
        rule_ = MakeFrameRule(parameters, clock_);
        if (clock_.frame == 0)
            for (Pixel& pixel : pixels_) pixel.spread = rule_.firstSpread;

        std::size_t const stride = (width_ + 31) / 32;
        std::fill_n(mask, stride * height_, 0U);
        std::fill_n(strong, stride * height_, 0U);
        std::size_t far = 0;
        for (int y = 0; y < int(height_); ++y)
            for (int x = 0; x < int(width_); ++x) {
                Judge(At(x, y), x, y);
                far += At(x, y).far ? 1 : 0;
            }
        clock_.globalChange = double(far) > std::clamp(parameters.globalChange, 0.1, 1.0) * double(pixels_.size());
        for (int y = 0; y < int(height_); ++y)
            for (int x = 0; x < int(width_); ++x) {
                Pixel const& pixel = At(x, y);
                std::uint32_t const bit = 0x80000000U >> (x % 32);
                std::size_t const word = std::size_t(y) * stride + std::size_t(x) / 32;
                if (pixel.foreground && !clock_.globalChange) {
                    mask[word] |= bit;
                    strong[word] |= pixel.distance / 2 > pixel.limit ? bit : 0U;
                }
            }
        LearnChroma(LearnLuma());
        ++clock_.frame;
    }

private:
    struct Pixel {
        int mean = 0, spread = 0, hits = 0, candidate = 0, candidateHits = 0;
        int distance = 0, limit = 0;
        bool far = false, foreground = false;
    };

    Pixel& At(int x, int y) { return pixels_[std::size_t(y) * width_ + std::size_t(x)]; }
    int Luma(int x, int y) const { return 128 * picture_.luma[y * picture_.lumaStride + x]; }
    int Chroma(int x, int y) const { return 128 * picture_.chroma[y * picture_.chromaStride + x]; }
    int& ChromaMean(int x, int y) { return chromaMeans_[std::size_t(y) * chromaWidth_ + std::size_t(x)]; }

    void Start() {
        width_ = picture_.width;
        height_ = picture_.height;
        coloured_ = picture_.chroma != nullptr;
        clock_ = {};
        clock_.coloured = coloured_;
        pixels_.assign(std::size_t(width_) * height_, {});
        for (int y = 0; y < int(height_); ++y)
            for (int x = 0; x < int(width_); ++x) At(x, y).mean = At(x, y).candidate = Luma(x, y);
        chromaWidth_ = (width_ + 1) / 2 * 2;
        chromaMeans_.assign(coloured_ ? chromaWidth_ * ((height_ + 1) / 2) : 0, 0);
        for (int i = 0; i < int(chromaMeans_.size()); ++i)
            chromaMeans_[std::size_t(i)] = Chroma(i % int(chromaWidth_), i / int(chromaWidth_));
    }

    /// The mean difference of every eighth pixel both ways, as far as it is below 16 levels, in 1/128 levels.
    int Drift() {
        int sum = 0, samples = 0;
        for (int y = 0; y < int(height_); y += 8)
            for (int x = 0; x < int(width_); x += 8)
                if (int const difference = Luma(x, y) - At(x, y).mean; std::abs(difference) < 16 * 128) {
                    sum += difference / 16;
                    ++samples;
                }
        return samples == 0 ? 0 : sum / samples * 16;
    }

    void Judge(Pixel& pixel, int x, int y) {
        int colour = 0;
        if (coloured_)
            for (int i = x / 2 * 2; i < x / 2 * 2 + 2; ++i)
                colour += std::min(std::abs(Chroma(i, y / 2) - ChromaMean(i, y / 2)), 4095);
        int const brightness = std::min(std::abs(Luma(x, y) - pixel.mean), 16383);
        pixel.distance = brightness + std::min((4 * colour * rule_.colourWeight) >> 16, 16383);
        pixel.limit = int((unsigned(pixel.spread) * rule_.threshold) >> 16);
        int const darkest = int((unsigned(pixel.mean) * rule_.shadowDepth) >> 16);
        bool const shadow = Luma(x, y) < pixel.mean && Luma(x, y) > darkest && colour < rule_.shadowColour;
        pixel.far = pixel.distance > pixel.limit;
        pixel.foreground = pixel.far && !shadow;
    }

    static int Step(int difference, Pace const& pace) {
        return ((std::min(difference, 16383) + pace.dither) * pace.rate) >> 16;
    }

    Pace const& PaceOf(int hits) const {
        return hits < 4 ? rule_.few : hits < 16 ? rule_.some : hits < 64 ? rule_.many : rule_.settled;
    }

    void Learn(Pixel& pixel, int level) const {
        Pace const& pace = PaceOf(pixel.hits);
        pixel.mean += Step(level - pixel.mean, pace);
        pixel.spread += Step(16 * std::min(pixel.distance, 2046) - pixel.spread, pace);
        pixel.spread = std::max<int>(pixel.spread, rule_.smallestSpread);
        pixel.hits = std::min<int>(pixel.hits + 1, rule_.mostHits);
        pixel.candidateHits = std::max(pixel.candidateHits - rule_.candidateDecay, 0);
    }

    /// Returns whether the candidate became the background.
    bool Doubt(Pixel& pixel, int level) const {
        pixel.hits = std::min<int>(pixel.hits, rule_.mostHits);
        if (std::abs(level - pixel.candidate) > pixel.limit) {
            if (pixel.candidateHits > 1) {
                pixel.candidateHits = std::min<int>(pixel.candidateHits - 1, rule_.mostHits);
            } else {
                pixel.candidate = level;
                pixel.candidateHits = 1;
            }
            return false;
        }
        pixel.candidate += (level - pixel.candidate) >> 3;
        pixel.candidateHits = std::min<int>(pixel.candidateHits + 1, rule_.mostHits);
        if (pixel.candidateHits < std::max(pixel.hits, 8)) return false;
        std::swap(pixel.mean, pixel.candidate);
        std::swap(pixel.hits, pixel.candidateHits);
        pixel.spread = rule_.firstSpread;
        return true;
    }

    std::vector<bool> LearnLuma() {
        std::vector<bool> replaced(pixels_.size());
        for (int y = 0; y < int(height_); ++y)
            for (int x = 0; x < int(width_); ++x) {
                if (At(x, y).far)
                    replaced[std::size_t(y) * width_ + std::size_t(x)] = Doubt(At(x, y), Luma(x, y));
                else
                    Learn(At(x, y), Luma(x, y));
            }
        return replaced;
    }

    /// A chroma byte follows unless half of the four pixels around it are far; those outside repeat the last ones.
    void LearnChroma(std::vector<bool> const& replaced) {
        for (int i = 0; i < int(chromaMeans_.size()); ++i) {
            int const cx = i % int(chromaWidth_), cy = i / int(chromaWidth_);
            int far = 0;
            bool anew = false;
            for (int corner = 0; corner < 4; ++corner) {
                int const x = std::min(cx / 2 * 2 + corner % 2, int(width_) - 1);
                int const y = std::min(cy * 2 + corner / 2, int(height_) - 1);
                far += At(x, y).far ? 1 : 0;
                anew = anew || replaced[std::size_t(y) * width_ + std::size_t(x)];
            }
            int& mean = chromaMeans_[std::size_t(i)];
            mean = anew ? Chroma(cx, cy) : far < 2 ? mean + Step(Chroma(cx, cy) - mean, rule_.chroma) : mean;
        }
    }

    Picture picture_;
    unsigned int width_ = 0, height_ = 0;
    bool coloured_ = false;
    FrameClock clock_;
    FrameRule rule_;
    std::vector<Pixel> pixels_;
    std::size_t chromaWidth_ = 0;
    std::vector<int> chromaMeans_;
};

}  // namespace qel::motion
