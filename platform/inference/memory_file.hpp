#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include <boost/filesystem/path.hpp>

#include "qel/system/descriptor.hpp"

namespace qel::inference {

/// The bytes of a file as they were, in memory that can be handed to another process.
class MemoryFile {
public:
    /// Copies a file. Throws std::runtime_error with the reason for one that cannot be read, is no regular file or has
    /// more bytes than that.
    MemoryFile(boost::filesystem::path const& path, std::size_t maximumSize);
    /// Shows the memory behind the descriptor of another MemoryFile. Throws std::runtime_error when that cannot be
    /// done.
    explicit MemoryFile(system::Descriptor descriptor);
    MemoryFile(MemoryFile&& other) noexcept
        : descriptor_(std::move(other.descriptor_)),
          bytes_(std::exchange(other.bytes_, nullptr)),
          size_(std::exchange(other.size_, 0)) {}
    MemoryFile& operator=(MemoryFile other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        std::swap(bytes_, other.bytes_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~MemoryFile();

    std::string_view GetBytes() const noexcept { return {static_cast<char const*>(bytes_), size_}; }
    int GetDescriptor() const noexcept { return descriptor_.Get(); }

private:
    void Show();

    system::Descriptor descriptor_;
    void* bytes_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace qel::inference
