// Settings of the plug-ins' algorithms, changed by nodes and by properties while frames are processed.
#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/plugin/loader.hpp"
#include "qel/algorithm/video/properties.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "threads/together.hpp"

namespace qel::test {
namespace {

namespace video = algorithm::video;
using configuration::node::Map;
using Frame = media::video::FrameBase<void>;

/// An algorithm of a plug-in with its nodes, as a host keeps it.
struct Configured {
    explicit Configured(hash::MurmurThree32 id) {
        static video::plugin::Loader const loader;
        {
            auto const entries = video::registry::Get().GetMap();
            video::registry::Info const& info = entries->at(id);
            info.CreateConfigNodes(manager, map);
            algorithm = info.GetMake()(manager);
            auto const& list = info.GetProperties();
            schemas = std::vector<property::Schema>(list.begin(), list.end());
        }
        bindings = algorithm->BindToConfiguration(*map);
    }

    inference::backend::Manager manager{};
    std::shared_ptr<Map> map = Map::Make("settings");
    std::shared_ptr<video::Algorithm> algorithm{};
    std::vector<property::Schema> schemas{};
    std::vector<type::Binding> bindings{};
};

Frame MakeFrame(int level) {
    Frame frame(media::ColourFormat::Grey8, 96, 64, {}, media::video::frame::Rotation::None);
    std::memset(frame.GetPlane(0).GetBuffer(), level, frame.GetPlane(0).GetSize());
    return frame;
}

/// A frame read-only, as it is handed to algorithms that only look.
media::video::FrameBase<void const> Share(Frame const& frame) {
    media::video::FrameBase<void const>::Planes planes;
    auto const& plane = frame.GetPlane(0);
    planes[0] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
    return {planes,         frame.GetColourFormat(), frame.GetSize(), {}, frame.GetRotation(),
            frame.GetRef(), frame.GetUnref()};
}

/// Processes frames while other threads write every setting back and forth between two JSON texts, and all of them by
/// the properties, and bind anew.
template <class Process>
void Stress(Configured& configured, std::string const& one, std::string const& other, Process const& process) {
    property::Binder binder(configured.map);
    video::Properties const properties(configured.algorithm, binder, configured.schemas);
    std::atomic<bool> isDone = false;
    auto const frames = [&] {
        for (int i = 0; i < Rounds(300); ++i) process(i);
        isDone = true;
    };
    auto const stage = [&] {
        for (int i = 0; !isDone; ++i) {
            configuration::json::Stage(*configured.map, i % 2 != 0 ? one : other);
            configured.map->Commit();
            configured.map->Fire();
        }
    };
    auto const set = [&] {
        while (!isDone) {
            for (property::Property& property : properties.GetProperties().GetAll()) {
                property.Set(*property.GetSchema().GetValue().GetDefault());
                EXPECT_NE(property.GetValue(), nullptr);
            }
        }
    };
    auto const bind = [&] {
        while (!isDone) {
            auto const bindings = configured.algorithm->BindToConfiguration(*configured.map);
            EXPECT_FALSE(bindings.empty());
        }
    };
    RunTogether({frames, stage, set, bind});
}

TEST(Settings, OfMotionChangeWhileFramesAreProcessed) {
    Configured configured(hash::MurmurThree32("qel.algorithm.video.Motion"));
    auto& motion = dynamic_cast<video::passthrough::Algorithm&>(*configured.algorithm);
    Stress(configured, R"({"threshold": 4.0, "minimum_area": 20})", R"({"threshold": 6.0, "minimum_area": 200})",
           [&](int i) {
               video::Result result;
               motion.Process(Share(MakeFrame(i % 5 * 40)), result);
           });
}

TEST(Settings, OfPrivacyMaskChangeWhileFramesAreProcessed) {
    Configured configured(hash::MurmurThree32("qel.algorithm.video.PrivacyMask"));
    auto& mask = dynamic_cast<video::inplace::Algorithm&>(*configured.algorithm);
    Stress(configured, R"({"zones": "0,0 40,0 40,30", "mode": "blank"})",
           R"({"zones": "10,10 60,10 60,60 10,60; 70,5 90,5 80,60", "mode": "pixelate"})", [&](int i) {
               video::Result result;
               Frame frame = MakeFrame(i % 5 * 40);
               mask.Process(frame, result);
           });
}

}  // namespace
}  // namespace qel::test
