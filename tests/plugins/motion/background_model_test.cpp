#include "background_model.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/motion_background_model.hpp"

namespace qel::motion {
namespace {

using Random = std::mt19937;

int Between(Random& random, int smallest, int largest) {
    return std::uniform_int_distribution<int>(smallest, largest)(random);
}

Parameters RandomParameters(Random& random) {
    Parameters parameters;
    parameters.threshold = Between(random, 10, 160) / 10.0;
    parameters.noise = Between(random, 1, 90) / 10.0;
    parameters.colourWeight = Between(random, 0, 40) / 10.0;
    parameters.shadowDepth = Between(random, 0, 10) / 10.0;
    parameters.shadowColour = Between(random, 0, 40);
    parameters.learningFrames = Between(random, 0, 3) == 0 ? 9000 : Between(random, 0, 400);
    parameters.absorbFrames = Between(random, 1, 100);
    parameters.globalChange = Between(random, 0, 12) / 10.0;
    return parameters;
}

/// A plane whose rows are padded and, at times, stored upside down.
class Plane {
public:
    Plane(Random& random, int width, int height) {
        std::ptrdiff_t const padded = width + Between(random, 0, 40);
        bool const upsideDown = Between(random, 0, 1) == 1;
        bytes_.resize(static_cast<std::size_t>(padded * height));
        stride_ = upsideDown ? -padded : padded;
        first_ = upsideDown ? padded * (height - 1) : 0;
        for (std::uint8_t& byte : bytes_) byte = static_cast<std::uint8_t>(Between(random, 0, 255));
    }

    /// Noise everywhere, a few places quite different, at times another light.
    Plane Next(Random& random, int noise, int light) const {
        Plane next = *this;
        for (std::uint8_t& byte : next.bytes_) {
            bool const odd = Between(random, 0, 19) == 0;
            int const level = odd ? Between(random, 0, 255) : byte + Between(random, -noise, noise);
            byte = static_cast<std::uint8_t>(std::clamp(level + light, 0, 255));
        }
        return next;
    }

    std::uint8_t const* GetFirst() const { return bytes_.data() + first_; }
    std::ptrdiff_t GetStride() const { return stride_; }

private:
    std::vector<std::uint8_t> bytes_;
    std::ptrdiff_t stride_ = 0;
    std::ptrdiff_t first_ = 0;
};

/// Runs both models over one random film and compares all masks, and the words that follow them.
void CompareOnAFilm(Random& random, BackgroundModel& model, ReferenceBackgroundModel& reference) {
    constexpr std::uint32_t Untouched = 0xa5a5a5a5U;
    int const width = Between(random, 0, 3) == 0 ? Between(random, 60, 200) : Between(random, 1, 70);
    int const height = Between(random, 1, 20), noise = Between(random, 0, 12);
    bool const coloured = Between(random, 0, 3) != 0;
    Parameters parameters = RandomParameters(random);
    Plane const luma(random, width, height), chroma(random, (width + 1) / 2 * 2, (height + 1) / 2);
    std::size_t const words = static_cast<std::size_t>((width + 31) / 32 * height);
    int light = 0;
    for (int frame = 0, frames = Between(random, 1, 150); frame < frames; ++frame) {
        if (Between(random, 0, 30) == 0) light = Between(random, -60, 60);
        if (Between(random, 0, 50) == 0) parameters = RandomParameters(random);
        Plane const y = luma.Next(random, noise, light), uv = chroma.Next(random, noise / 3, 0);
        Picture const picture{y.GetFirst(),
                              y.GetStride(),
                              coloured ? uv.GetFirst() : nullptr,
                              uv.GetStride(),
                              static_cast<unsigned int>(width),
                              static_cast<unsigned int>(height)};
        std::vector<std::uint32_t> mask(words + 2, Untouched), strong = mask, mask2 = mask, strong2 = mask;
        model.Apply(picture, parameters, mask.data(), strong.data());
        reference.Apply(picture, parameters, mask2.data(), strong2.data());
        ASSERT_EQ(mask, mask2) << width << " x " << height << ", coloured " << coloured << ", frame " << frame;
        ASSERT_EQ(strong, strong2) << width << " x " << height << ", coloured " << coloured << ", frame " << frame;
    }
}

TEST(BackgroundModel, EqualsTheModelOfOnePixelAfterTheOtherOnEveryInstructionSet) {
    for (PixelRows const* const rows : RowsOfThisProcessor()) {
        Random random(1);
        BackgroundModel model(*rows);
        ReferenceBackgroundModel reference;
        for (int film = 0; film < 60 && !HasFatalFailure(); ++film) CompareOnAFilm(random, model, reference);
    }
}

/// A picture of one grey level with a little noise, in which rectangles of another level can be put.
class Scene {
public:
    static constexpr unsigned int Width = 96, Height = 64;

    explicit Scene(std::uint8_t level, std::uint8_t chroma = 128)
        : level_(level), luma_(Width * Height), chroma_(Width * Height / 2, chroma) {}

    Scene& Draw(unsigned int x, unsigned int y, unsigned int w, unsigned int h, std::uint8_t level) {
        boxes_.push_back({x, y, w, h, level});
        return *this;
    }

    Picture Show() {
        for (std::size_t i = 0; i < luma_.size(); ++i) {
            luma_[i] = static_cast<std::uint8_t>(level_ + static_cast<int>(noise_() % 3) - 1);
        }
        for (Box const& box : boxes_) {
            for (unsigned int y = box.y; y < box.y + box.h; ++y) {
                std::fill_n(luma_.begin() + y * Width + box.x, box.w, box.level);
            }
        }
        return {luma_.data(), Width, chroma_.data(), Width, Width, Height};
    }

private:
    struct Box {
        unsigned int x, y, w, h;
        std::uint8_t level;
    };

    std::uint8_t level_;
    std::vector<std::uint8_t> luma_, chroma_;
    std::vector<Box> boxes_;
    Random noise_{7};
};

/// A model, its parameters and the number of foreground pixels of a scene.
struct Watcher {
    BackgroundModel model;
    Parameters parameters;
    std::vector<std::uint32_t> mask = std::vector<std::uint32_t>(Scene::Width / 32 * Scene::Height);
    std::vector<std::uint32_t> strong = mask;

    static int Count(std::vector<std::uint32_t> const& words) {
        return std::accumulate(words.begin(), words.end(), 0,
                               [](int n, std::uint32_t w) { return n + std::popcount(w); });
    }
    int See(Scene& scene, int frames = 1) {
        for (int i = 0; i < frames; ++i) model.Apply(scene.Show(), parameters, mask.data(), strong.data());
        return Count(mask);
    }
};

TEST(BackgroundModel, TakesTheFirstFrameForBackground) {
    Watcher watcher;
    Scene scene = Scene(90).Draw(10, 10, 20, 20, 200);
    EXPECT_EQ(watcher.See(scene), 0);
    EXPECT_EQ(watcher.See(scene, 30), 0);
}

TEST(BackgroundModel, SeesAnObjectInThePixelsWhereItIs) {
    Watcher watcher;
    Scene empty(90), object = Scene(90).Draw(32, 8, 32, 4, 200);
    watcher.See(empty, 30);
    EXPECT_EQ(watcher.See(object), 32 * 4);
    for (std::size_t y = 0; y < Scene::Height; ++y) {
        EXPECT_EQ(watcher.mask[3 * y + 1], y >= 8 && y < 12 ? ~0U : 0U) << "row " << y;
    }
    EXPECT_EQ(watcher.strong, watcher.mask);
    EXPECT_EQ(watcher.See(empty), 0);
}

TEST(BackgroundModel, MarksOnlyWhatIsTwiceAsFarAsItHadToBeAsStrong) {
    Watcher watcher;
    watcher.parameters.threshold = 5;
    watcher.parameters.noise = 4;  // so that pixels more than 20 levels off are foreground
    Scene empty(90), near = Scene(90).Draw(0, 0, 32, 4, 120), distant = Scene(90).Draw(0, 0, 32, 4, 140);
    watcher.See(empty, 100);
    EXPECT_EQ(watcher.See(near), 128);
    EXPECT_EQ(Watcher::Count(watcher.strong), 0);
    EXPECT_EQ(watcher.See(distant), 128);
    EXPECT_EQ(Watcher::Count(watcher.strong), 128);
}

TEST(BackgroundModel, LosesTheGhostOfWhatStoodInTheFirstFramesAfterAsManyFrames) {
    Watcher watcher;
    Scene empty(90), object = Scene(90).Draw(0, 0, 32, 10, 200);
    watcher.See(object, 20);
    EXPECT_EQ(watcher.See(empty), 320);
    EXPECT_EQ(watcher.See(empty, 30), 0);
}

TEST(BackgroundModel, AbsorbsWhatStopsAfterTheGivenFramesAndRemembersWhatItHides) {
    Watcher watcher;
    watcher.parameters.absorbFrames = 64;
    Scene empty(90), object = Scene(90).Draw(0, 0, 32, 10, 200);
    watcher.See(empty, 200);
    EXPECT_EQ(watcher.See(object, 60), 320);
    EXPECT_EQ(watcher.See(object, 10), 0);
    EXPECT_EQ(watcher.See(empty, 1), 320) << "it leaves: what it hid is foreground at first";
    EXPECT_EQ(watcher.See(empty, 64), 0);
}

TEST(BackgroundModel, LeavesOutShadowsUnlessTheyAreSwitchedOff) {
    for (double const depth : {0.6, 1.0}) {
        Watcher watcher;
        watcher.parameters.shadowDepth = depth;
        Scene empty(150), shadow = Scene(150).Draw(0, 0, 32, 10, 105), dark = Scene(150).Draw(0, 0, 32, 10, 60);
        watcher.See(empty, 50);
        EXPECT_EQ(watcher.See(shadow), depth < 1 ? 0 : 320) << depth;
        EXPECT_EQ(watcher.See(dark), 320) << depth;
    }
}

TEST(BackgroundModel, SeesAChangeOfColourAlone) {
    Watcher watcher;
    Scene grey(90, 128), red(90, 160);
    watcher.parameters.globalChange = 1;
    watcher.See(grey, 50);
    EXPECT_EQ(watcher.See(red), static_cast<int>(Scene::Width * Scene::Height));
    watcher.See(grey);
    watcher.parameters.colourWeight = 0;
    EXPECT_EQ(watcher.See(red), 0);
}

TEST(BackgroundModel, LearnsAnewWhenMostOfThePictureChanges) {
    Watcher watcher;
    Scene dark(60), bright(160), object = Scene(160).Draw(0, 0, 32, 10, 60);
    watcher.See(dark, 300);
    EXPECT_EQ(watcher.See(bright), 0) << "a switched light is no object";
    EXPECT_EQ(watcher.See(bright, 12), 0);
    EXPECT_EQ(watcher.See(object), 320);
}

TEST(BackgroundModel, FollowsAFadingLight) {
    Watcher watcher;
    int level = 80;
    for (int frame = 0; frame < 200; ++frame) {
        if (frame > 50 && frame % 4 == 0) ++level;
        Scene scene(static_cast<std::uint8_t>(level));
        EXPECT_EQ(watcher.See(scene), 0) << "frame " << frame;
    }
}

TEST(BackgroundModel, StartsAfreshAfterResetAndForAnotherSizeOrKindOfPicture) {
    Watcher watcher;
    Scene empty(90), object = Scene(90).Draw(0, 0, 32, 10, 200);
    watcher.See(empty, 30);
    watcher.model.Reset();
    EXPECT_EQ(watcher.See(object), 0);

    Picture half = object.Show();
    half.height /= 2;
    watcher.See(empty, 30);
    watcher.model.Apply(half, watcher.parameters, watcher.mask.data());
    EXPECT_EQ(Watcher::Count(watcher.mask), 0);

    watcher.See(empty, 30);
    Picture grey = object.Show();
    grey.chroma = nullptr;
    watcher.model.Apply(grey, watcher.parameters, watcher.mask.data());
    EXPECT_EQ(Watcher::Count(watcher.mask), 0);
}

}  // namespace
}  // namespace qel::motion
