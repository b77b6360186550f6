#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "network.hpp"
#include "qel/inference/model.hpp"

namespace qel::inference {

/// What a model is made of: the bytes and texts of one moment, and the network that was built of them.
struct Model::Impl {
    std::string name;
    boost::filesystem::path file;
    Metadata metadata;
    std::string metadataText;
    std::vector<std::string> labels;
    std::vector<std::size_t> inputShape;  ///< as in OnnxGraph
    std::unique_ptr<Network> network;
    mutable std::mutex networkMutex{};
};

}  // namespace qel::inference
