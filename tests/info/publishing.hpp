#pragma once

#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "info/tree.hpp"
#include "qel/algorithm/info_builder.hpp"
#include "qel/inference/get_model_root_path.hpp"
#include "qel/logging/configure.hpp"
#include "qel/logging/sink.hpp"

namespace qel::algorithm {

/// A model root of its own for a test, gone with it.
class ModelRoot {
public:
    ModelRoot()
        : path_(boost::filesystem::canonical(boost::filesystem::temp_directory_path()) /
                boost::filesystem::unique_path("qel-models-%%%%%%%%")) {
        boost::filesystem::create_directory(path_);
        inference::SetModelRoot(path_);
    }
    ModelRoot(ModelRoot const&) = delete;
    ModelRoot& operator=(ModelRoot const&) = delete;
    ~ModelRoot() {
        boost::filesystem::remove_all(path_);
        inference::SetModelRoot("models");
    }

    /// The metadata file of a model, whose directory is made.
    boost::filesystem::path GetMetadataPath(std::string const& model) const {
        boost::filesystem::create_directories(path_ / model / "onnx");
        return path_ / model / "onnx" / "metadata.json";
    }
    void WriteMetadata(std::string const& model, std::string const& json) const {
        std::ofstream(GetMetadataPath(model).string(), std::ios::binary) << json;
    }
    std::string GetPath() const { return path_.string(); }

private:
    boost::filesystem::path path_;
};

/// Keeps the callbacks for the test to call.
class RecordingManager : public inference::backend::Manager {
public:
    void RegisterModelUpdateCallback(std::string_view modelName, ModelUpdateCallback callback) override {
        if (onRegister) onRegister(std::string(modelName), callback);
        callbacks.emplace_back(modelName, std::move(callback));
    }

    std::vector<std::pair<std::string, ModelUpdateCallback>> callbacks;
    std::function<void(std::string const&, ModelUpdateCallback const&)> onRegister;
};

/// The lines logged while it lives, "level name: text", from Information upwards.
class LoggedLines {
public:
    LoggedLines()
        : binding_(logging::BindSink([this](logging::Level level, std::string_view name, std::string_view text) {
              lines.push_back(std::to_string(static_cast<int>(level)) + " " + std::string(name) + ": " +
                              std::string(text));
          })) {
        logging::Configure("information");
    }
    LoggedLines(LoggedLines const&) = delete;
    LoggedLines& operator=(LoggedLines const&) = delete;
    ~LoggedLines() { logging::Configure(""); }

    Strings lines;

private:
    type::Binding binding_;
};

/// The data of a node below a map as JSON; a note when there is no such node.
inline std::string DataOf(Map const& root, std::string const& path) {
    auto const node = root.Find(path);
    return node ? configuration::json::Data(*node) : "there is no " + path;
}

}  // namespace qel::algorithm
