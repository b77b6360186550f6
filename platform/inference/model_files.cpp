#include "model_files.hpp"

#include <cerrno>
#include <exception>
#include <stdexcept>

#include <sys/stat.h>

#include "input_file.hpp"
#include "onnx_graph.hpp"
#include "qel/inference/load_labels.hpp"
#include "qel/serialize/json_input.hpp"
#include "qel/serialize/load_json_from_file.hpp"

namespace qel::inference {
namespace {

std::int64_t Nanoseconds(timespec const& time) { return time.tv_sec * 1'000'000'000 + time.tv_nsec; }

FileStamp LookAt(boost::filesystem::path const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {.error = errno};
    return {0, status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim), Nanoseconds(status.st_ctim)};
}

bool Exists(FileStamp const& stamp) { return stamp.error != ENOENT && stamp.error != ENOTDIR; }

/// Puts the file in front of what goes wrong with it.
template <class Action>
auto Naming(boost::filesystem::path const& path, Action action) {
    try {
        return action();
    } catch (std::exception const& error) {
        throw std::runtime_error(path.string() + " " + error.what());
    }
}

std::string ReadMetadata(boost::filesystem::path const& path, Metadata& metadata) {
    std::string text = ReadRegularFile(path, serialize::MaximumFileSize);
    try {
        metadata.Serialize(serialize::JsonInput(text).GetArchive());
    } catch (std::exception const& error) {
        throw std::runtime_error(std::string("cannot be used: ") + error.what());
    }
    if (metadata.GetMaxBatchSize() == 0)
        throw std::runtime_error("cannot be used: \"max_batch_size\" must be 1 or more");
    return text;
}

}  // namespace

ModelFiles::ModelFiles(boost::filesystem::path const& folder)
    : model_(folder / "onnx" / "model.onnx"),
      metadata_(folder / "onnx" / "metadata.json"),
      labels_(folder / "onnx" / "labels.txt") {}

ModelFiles::Stamps ModelFiles::Look() const { return {LookAt(model_), LookAt(metadata_), LookAt(labels_)}; }

bool ModelFiles::IsModel(Stamps const& stamps) { return Exists(stamps[0]) && Exists(stamps[1]); }

ModelContent ModelFiles::Read() const {
    // Metadata first: it is small, and most mistakes are made there.
    ModelContent content;
    Naming(metadata_, [&] { content.metadataText = ReadMetadata(metadata_, content.metadata); });
    if (Exists(LookAt(labels_))) content.labels = LoadLabels(labels_);
    Naming(model_, [&] {
        content.model.emplace(model_, MaximumModelSize);
        content.inputShape = ReadOnnxGraph(content.model->GetBytes()).inputShape;
    });
    return content;
}

std::int32_t ModelFiles::ReadPriority() const {
    try {
        Metadata metadata;
        ReadMetadata(metadata_, metadata);
        return metadata.GetBackendLoadingPriority();
    } catch (std::exception const&) {
        return 0;
    }
}

}  // namespace qel::inference
