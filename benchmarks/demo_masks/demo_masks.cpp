// Writes the motion masks of a video, for the benchmarks to measure with.
//
// usage: qel_demo_masks VIDEO FOLDER
//
// The video is scaled to each of the sizes measured and goes through the motion plug-in's background model (raw masks)
// and its clean-up with default settings (clean masks). Frames 100, 200 and 300 become
// FOLDER/WIDTHxHEIGHT/demo-raw-FRAME.pbm and demo-clean-FRAME.pbm.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#include "background_model.hpp"
#include "mask_cleaner.hpp"
#include "motion.hpp"
#include "support/mask_files.hpp"
#include "support/masks.hpp"

namespace {

using namespace qel::benchmarks;
using qel::algorithm::BitMask;

constexpr int FirstFrame = 100, LastFrame = 300, Step = 100;

/// A picture as the background model reads it.
struct Planes {
    std::vector<std::uint8_t> luma, chroma;
};

Planes Convert(cv::Mat const& bgr) {
    cv::Mat i420;
    cv::cvtColor(bgr, i420, cv::COLOR_BGR2YUV_I420);
    std::size_t const luma = bgr.total(), quarter = luma / 4;
    Planes planes{{i420.data, i420.data + luma}, std::vector<std::uint8_t>(2 * quarter)};
    for (std::size_t i = 0; i < quarter; ++i) {
        planes.chroma[2 * i] = i420.data[luma + i];
        planes.chroma[2 * i + 1] = i420.data[luma + quarter + i];
    }
    return planes;
}

/// The masks of one size, frame by frame.
class Writer {
public:
    Writer(Size size, std::filesystem::path const& folder) : size_(size), folder_(folder / Name(size)), mask_(size) {
        std::filesystem::create_directories(folder_);
    }

    void Add(cv::Mat const& frame, int number) {
        cv::Mat scaled;
        cv::resize(frame, scaled, {static_cast<int>(size_.width), static_cast<int>(size_.height)});
        Planes const planes = Convert(scaled);
        auto const width = static_cast<std::ptrdiff_t>(size_.width);
        model_.Apply({planes.luma.data(), width, planes.chroma.data(), width, size_.width, size_.height},
                     settings_.model, mask_.GetData().data());
        if (number < FirstFrame || number % Step != 0) return;
        WriteMask(mask_, folder_ / ("demo-raw-" + std::to_string(number) + ".pbm"));
        BitMask clean(mask_);
        cleaner_.Clean(clean, settings_.opening, settings_.closing);
        WriteMask(clean, folder_ / ("demo-clean-" + std::to_string(number) + ".pbm"));
    }

private:
    Size size_;
    std::filesystem::path folder_;
    qel::motion::Settings settings_;
    qel::motion::BackgroundModel model_;
    qel::motion::MaskCleaner cleaner_;
    BitMask mask_;
};

void WriteMasks(std::string const& video, std::filesystem::path const& folder) {
    cv::VideoCapture capture(video);
    std::vector<Writer> writers;
    for (Size const size : Sizes) writers.emplace_back(size, folder);
    cv::Mat frame;
    for (int number = 0; number <= LastFrame; ++number) {
        if (!capture.read(frame)) {
            throw std::runtime_error(video + ": has no frame " + std::to_string(number) + "; frames 0 to " +
                                     std::to_string(LastFrame) + " are needed");
        }
        for (Writer& writer : writers) writer.Add(frame, number);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::fputs("usage: qel_demo_masks VIDEO FOLDER\n", stderr);
        return 2;
    }
    WriteMasks(argv[1], argv[2]);
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "qel_demo_masks: %s\n", error.what());
    return 1;
}
