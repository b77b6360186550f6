#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qel/algorithm/video/plugin/loader.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/inference/backend/manager.hpp"
#include "qel/property/schema.hpp"

namespace qel::test {

/// An algorithm of a plug-in as a host meets it: loaded, registered, with its nodes in a tree, made. Not bound yet.
/// Kind: inplace::Algorithm or passthrough::Algorithm.
template <class Kind>
class PluginTest : public testing::Test {
protected:
    using Map = configuration::node::Map;
    using Manager = inference::backend::Manager;

    explicit PluginTest(char const* typeName, std::unique_ptr<Manager> manager = std::make_unique<Manager>())
        : manager_(std::move(manager)) {
        static algorithm::video::plugin::Loader const loader;
        root_->Insert(map_);
        auto const registry = algorithm::video::registry::Get().GetMap();
        auto const& info = registry->at(hash::MurmurThree32(typeName));
        info.CreateConfigNodes(*manager_, map_);
        algorithm_ = std::dynamic_pointer_cast<Kind>(info.GetMake()(*manager_));
        schemas_ = std::vector<property::Schema>(info.GetProperties().begin(), info.GetProperties().end());
    }

    /// The names of the properties' nodes; each must be described.
    std::vector<std::string> GetPropertyNames() const {
        std::vector<std::string> names;
        for (auto const& node : map_->GetChildren()) {
            names.push_back(node->GetName());
            EXPECT_NE(node->GetDescription(), "") << node->GetName();
        }
        return names;
    }

    /// The tree outlives the manager, which tells it of models.
    std::shared_ptr<Map> root_ = Map::Make("");
    std::shared_ptr<Map> map_ = Map::Make("properties");
    std::unique_ptr<Manager> manager_;
    std::shared_ptr<Kind> algorithm_;
    std::vector<property::Schema> schemas_;
};

}  // namespace qel::test
