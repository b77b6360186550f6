// The motion plug-in beside OpenCV's Gaussian-mixture background model with the same clean-up and labelling, on a
// video.
//
// usage: qel_motion_bench VIDEO [FRAMES]
//
// Frames are decoded beforehand; each contestant gets them in the format that it likes best, and short stretches of the
// video in turn, so that what else the machine does hits all of them. Prints milliseconds a frame and ratios.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/video/background_segm.hpp>
#include <opencv2/videoio.hpp>

#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/plugin/loader.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/inference/backend/manager.hpp"

namespace {

namespace video = qel::algorithm::video;
using Frame = qel::media::video::FrameBase<void const>;
using Plane = qel::media::video::frame::PlaneBase<void const>;

constexpr int MinimumArea = 400;

/// A decoded frame, as each of the two wants it.
struct Picture {
    cv::Mat bgr;
    std::vector<unsigned char> nv12;
};

Picture Convert(cv::Mat const& bgr) {
    Picture picture{bgr.clone(), {}};
    cv::Mat i420;
    cv::cvtColor(bgr, i420, cv::COLOR_BGR2YUV_I420);
    std::size_t const luma = bgr.total(), chroma = luma / 4;
    picture.nv12.assign(i420.data, i420.data + luma);
    for (std::size_t i = 0; i < chroma; ++i) {
        picture.nv12.push_back(i420.data[luma + i]);
        picture.nv12.push_back(i420.data[luma + chroma + i]);
    }
    return picture;
}

std::vector<Picture> Decode(std::string const& file, std::size_t count) {
    cv::VideoCapture capture(file);
    std::vector<Picture> pictures;
    for (cv::Mat bgr; pictures.size() < count && capture.read(bgr);) {
        if (bgr.cols % 2 != 0 || bgr.rows % 2 != 0) throw std::runtime_error(file + ": needs an even width and height");
        pictures.push_back(Convert(bgr));
    }
    if (pictures.empty()) throw std::runtime_error(file + ": no frames can be read from it");
    return pictures;
}

/// Something that finds moving objects, and the time it took.
struct Contestant {
    std::string name;
    std::function<std::size_t(Picture const&)> find;
    double seconds = 0;
    std::size_t objects = 0;
};

Contestant Ours() {
    qel::inference::backend::Manager manager;
    auto const registry = video::registry::Get().GetMap();
    auto const& make = registry->at(qel::hash::MurmurThree32("qel.algorithm.video.Motion")).GetMake();
    auto const algorithm = std::dynamic_pointer_cast<video::passthrough::Algorithm>(make(manager));
    return {
        "qel motion, 1 thread", [algorithm](Picture const& picture) {
            auto const width = static_cast<unsigned int>(picture.bgr.cols);
            auto const height = static_cast<unsigned int>(picture.bgr.rows);
            std::size_t const luma = picture.bgr.total();
            Frame const frame(
                {Plane(luma, picture.nv12.data(), width), Plane(luma / 2, picture.nv12.data() + luma, width), {}, {}},
                qel::media::ColourFormat::Nv12, width, height, {}, {}, {}, {});
            video::Result result;
            algorithm->Process(frame, result);
            return result.objects.size();
        }};
}

Contestant Mixture(std::string name, int threads) {
    struct State {
        cv::Ptr<cv::BackgroundSubtractorMOG2> model = cv::createBackgroundSubtractorMOG2();
        cv::Mat mask, cleaned, labels, statistics, centres;
        cv::Mat const element = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
    };
    auto const state = std::make_shared<State>();
    return {std::move(name), [state, threads](Picture const& picture) {
                cv::setNumThreads(threads);
                state->model->apply(picture.bgr, state->mask);
                cv::threshold(state->mask, state->mask, 200, 255, cv::THRESH_BINARY);  // leaves shadows out
                cv::morphologyEx(state->mask, state->cleaned, cv::MORPH_OPEN, state->element);
                cv::morphologyEx(state->cleaned, state->mask, cv::MORPH_CLOSE, state->element);
                int const labels = cv::connectedComponentsWithStats(state->mask, state->labels, state->statistics,
                                                                    state->centres, 8, CV_32S, cv::CCL_BBDT);
                std::size_t objects = 0;
                for (int i = 1; i < labels; ++i) {
                    objects += state->statistics.at<int>(i, cv::CC_STAT_AREA) >= MinimumArea ? 1 : 0;
                }
                return objects;
            }};
}

void Run(std::vector<Picture> const& pictures, std::vector<Contestant>& contestants) {
    constexpr std::size_t Stretch = 20;
    for (std::size_t first = 0; first < pictures.size(); first += Stretch) {
        for (Contestant& contestant : contestants) {
            auto const start = std::chrono::steady_clock::now();
            for (std::size_t i = first; i < std::min(first + Stretch, pictures.size()); ++i) {
                contestant.objects += contestant.find(pictures[i]);
            }
            contestant.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        }
    }
}

}  // namespace

int main(int count, char** arguments) try {
    if (count < 2) {
        std::fprintf(stderr, "usage: %s VIDEO [FRAMES]\n", arguments[0]);
        return 2;
    }
    int const cores = cv::getNumThreads();
    std::vector<Picture> const pictures =
        Decode(arguments[1], count > 2 ? std::strtoul(arguments[2], nullptr, 10) : 400);
    video::plugin::Loader const loader;
    std::vector<Contestant> contestants;
    contestants.push_back(Ours());
    contestants.push_back(Mixture("OpenCV MOG2, 1 thread", 1));
    contestants.push_back(Mixture("OpenCV MOG2, " + std::to_string(cores) + " threads", cores));
    Run(pictures, contestants);
    std::printf("%zu frames of %d x %d, decoding left out\n\n", pictures.size(), pictures[0].bgr.cols,
                pictures[0].bgr.rows);
    std::printf("| contestant | ms a frame | frames/s | times ours | objects |\n|---|---|---|---|---|\n");
    for (Contestant const& contestant : contestants) {
        double const frame = contestant.seconds / static_cast<double>(pictures.size());
        std::printf("| %s | %.2f | %.0f | %.1f | %zu |\n", contestant.name.c_str(), 1000 * frame, 1 / frame,
                    contestant.seconds / contestants[0].seconds, contestant.objects);
    }
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
