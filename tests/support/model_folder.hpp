#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

#include "qel/inference/get_model_root_path.hpp"
#include "support/onnx_model.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {

/// How long a test waits for what happens within a second or never, on a machine that is busy otherwise.
inline constexpr std::chrono::seconds Patience(60);

/// A model root of a test's own; when it goes, the process's is what it is without one. Files appear whole: they are
/// written elsewhere and moved into place.
class ModelFolder {
public:
    ModelFolder() = default;
    ModelFolder(ModelFolder const&) = delete;
    ModelFolder& operator=(ModelFolder const&) = delete;
    ~ModelFolder() { inference::SetModelRoot("models"); }

    std::filesystem::path const& GetRoot() const noexcept { return root_; }
    std::filesystem::path FileOf(std::string const& name, std::string_view file) const {
        return root_ / name / "onnx" / file;
    }

    void Write(std::string const& name, std::string_view file, std::string_view bytes) const {
        auto const target = FileOf(name, file);
        std::filesystem::create_directories(target.parent_path());
        std::string const aside = (root_ / ".aside").string();
        WriteFile(aside, bytes);
        std::filesystem::rename(aside, target);
    }
    void Write(std::string const& name, MeanClassifier const& network,
               std::string_view metadata = R"({"max_batch_size": 4, "version": "1"})") const {
        Write(name, "metadata.json", metadata);
        Write(name, "model.onnx", MakeOnnx(network));
    }
    void Remove(std::string const& name) const { std::filesystem::remove_all(root_ / name); }

private:
    TemporaryDirectory folder_;
    std::filesystem::path root_ = folder_.GetPath();
};

}  // namespace qel::test
