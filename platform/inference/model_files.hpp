#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "memory_file.hpp"
#include "qel/inference/metadata.hpp"

namespace qel::inference {

/// How many bytes a model file may have.
inline constexpr std::size_t MaximumModelSize = std::size_t{512} << 20U;

/// What tells one content of a file from another without reading it.
struct FileStamp {
    int error = 0;  ///< errno, where the file cannot be looked at
    std::uint64_t device = 0;
    std::uint64_t file = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0;  ///< nanoseconds
    std::int64_t changed = 0;

    friend bool operator==(FileStamp const&, FileStamp const&) = default;
};

/// What stood in the files of a model.
struct ModelContent {
    std::optional<MemoryFile> model;
    std::vector<std::size_t> inputShape;  ///< as in OnnxGraph
    Metadata metadata;
    std::string metadataText;
    std::vector<std::string> labels;
};

/// The files of one model.
class ModelFiles {
public:
    using Stamps = std::array<FileStamp, 3>;

    /// folder: NAME below the model root.
    explicit ModelFiles(boost::filesystem::path const& folder);

    boost::filesystem::path const& GetModel() const noexcept { return model_; }
    Stamps Look() const;
    /// Whether there is a model to be loaded: file and metadata are there, whatever they may be.
    static bool IsModel(Stamps const& stamps);
    /// Reads everything; throws std::runtime_error with file and reason.
    ModelContent Read() const;
    /// The priority in the metadata, 0 where that cannot be read.
    std::int32_t ReadPriority() const;

private:
    boost::filesystem::path model_;
    boost::filesystem::path metadata_;
    boost::filesystem::path labels_;
};

}  // namespace qel::inference
