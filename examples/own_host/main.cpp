// A host of one's own: loads the plug-ins, configures the motion algorithm and runs it on frames that it makes itself.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include <qel/algorithm/video/passthrough/algorithm.hpp>
#include <qel/algorithm/video/plugin/loader.hpp>
#include <qel/algorithm/video/registry/get.hpp>
#include <qel/configuration/json.hpp>
#include <qel/configuration/node/map.hpp>
#include <qel/inference/backend/manager.hpp>
#include <qel/system/plugin/load_error.hpp>

namespace configuration = qel::configuration;
namespace video = qel::algorithm::video;
using Frame = qel::media::video::FrameBase<void const>;
using Plane = qel::media::video::frame::PlaneBase<void const>;

constexpr unsigned int Width = 160, Height = 120;

void LoadPlugins() {
    try {
        video::plugin::Loader const loader;  // those beside libqel_algorithm.so
    } catch (qel::system::plugin::LoadError const& error) {
        for (auto const& problem : error.GetProblems()) {  // the others are loaded all the same
            std::fprintf(stderr, "%s: %s\n", problem.file.c_str(), problem.reason.c_str());
        }
    }
}

// A grey picture; from the tenth on with a bright box that moves four pixels to the right with each.
std::vector<std::uint8_t> Paint(unsigned int index) {
    std::vector<std::uint8_t> pixels(Width * Height, 60);
    unsigned int const left = 4 * (index - 10);
    for (unsigned int y = 40; index >= 10 && y < 80; ++y) {
        for (unsigned int x = left; x < left + 20; ++x) pixels[y * Width + x] = 220;
    }
    return pixels;
}

int main() {
    LoadPlugins();
    qel::inference::backend::Manager models;
    auto const settings = configuration::node::Map::Make("motion");
    std::shared_ptr<video::Algorithm> algorithm;
    {
        auto const registry = video::registry::Get().GetMap();  // locked while this lives
        auto const entry = registry->find(qel::hash::MurmurThree32("qel.algorithm.video.Motion"));
        if (entry == registry->end()) throw std::runtime_error("the plug-in libqel_algorithm_motion.so is missing");
        entry->second.CreateConfigNodes(models, settings);
        algorithm = entry->second.GetMake()(models);
    }

    // Settings may change at any time, from any thread; the bindings carry them to the algorithm.
    configuration::json::Stage(*settings, R"({"minimum_area": 100})");
    settings->Commit();
    auto const bindings = algorithm->BindToConfiguration(*settings);

    auto& motion = dynamic_cast<video::passthrough::Algorithm&>(*algorithm);
    for (unsigned int index = 0; index < 30; ++index) {
        std::vector<std::uint8_t> const pixels = Paint(index);
        Frame::Planes planes;
        planes[0] = Plane(pixels.size(), pixels.data(), Width);
        auto const time = qel::media::TimePoint(std::chrono::milliseconds(100 * index));
        Frame const frame(planes, qel::media::ColourFormat::Grey8, Width, Height, time, {}, {}, {});

        video::Result result;
        motion.Process(frame, result);
        if (index % 5 != 4) continue;
        std::printf("frame %u: %zu objects\n", index, result.objects.size());
        for (video::Object const& object : result.objects) {
            std::printf("  %s: columns %u to %u, rows %u to %u\n", object.label.c_str(), object.box.x0,
                        object.box.x1 - 1, object.box.y0, object.box.y1 - 1);
        }
    }
}
