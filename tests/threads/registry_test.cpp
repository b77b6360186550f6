// The registry of algorithms: read, written and bound from while plug-ins load.
#include <atomic>
#include <filesystem>
#include <list>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/plugin/loader.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/load_all.hpp"
#include "qel/system/plugin/load_error.hpp"
#include "support/temporary_directory.hpp"
#include "threads/together.hpp"

namespace qel::test {
namespace {

namespace registry = algorithm::video::registry;
using hash::MurmurThree32;

constexpr MurmurThree32 Motion("qel.algorithm.video.Motion");

TEST(Registry, IsReadAndWrittenWhilePluginsLoad) {
    algorithm::video::plugin::Loader const loader;
    // Copies of a plug-in: each is loaded, and told that its identifier is taken.
    TemporaryDirectory const folder;
    auto const plugins = std::filesystem::path(system::GetLibraryPath("qel_algorithm").string()).parent_path();
    int const copies = 8;
    for (int i = 0; i < copies; ++i) {
        std::filesystem::copy_file(plugins / "libqel_algorithm_motion.so",
                                   folder / ("libqel_algorithm_copy" + std::to_string(i) + ".so"));
    }
    static std::list<std::string> names;  // entries and their names are kept for good
    std::atomic<bool> isDone = false;
    std::atomic<int> refused = 0;
    auto const load = [&] {
        try {
            system::plugin::LoadAll("qel_algorithm_", {folder.GetPath().string()});
        } catch (system::plugin::LoadError const& error) {
            refused = static_cast<int>(error.GetProblems().size());
        }
        isDone = true;
    };
    auto const write = [&] {
        for (int i = 0; i < Rounds(200); ++i) {
            char const* const name = names.emplace_back("test.threads." + std::to_string(i)).c_str();
            registry::Register({MurmurThree32(name), name, {}, {}, {}});
        }
    };
    auto const read = [&] {
        inference::backend::Manager manager;
        while (!isDone) {
            auto const map = configuration::node::Map::Make("map");
            std::shared_ptr<algorithm::video::Algorithm> made;
            {
                auto const entries = registry::Get().GetMap();
                for (auto const& [id, info] : *entries) EXPECT_EQ(id, MurmurThree32(info.GetTypeName()));
                entries->at(Motion).CreateConfigNodes(manager, map);
                made = entries->at(Motion).GetMake()(manager);
            }
            auto const bindings = made->BindToConfiguration(*map);
            EXPECT_FALSE(bindings.empty());
        }
    };
    RunTogether({load, write, read, read});
    EXPECT_EQ(refused, copies);
}

}  // namespace
}  // namespace qel::test
