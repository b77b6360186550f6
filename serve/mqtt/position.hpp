#pragma once

#include <cstdint>
#include <memory>

#include <boost/filesystem/path.hpp>

#include "file.hpp"

namespace qel::serve::mqtt {

/// A number that only grows, kept in a file so that a write cut short never loses the one before it: two places are
/// written in turn, 512 bytes apart, each with the number (8 bytes) and its CRC-32 (4 bytes), lowest byte first.
/// One thread at a time. Throws host::Error when the file cannot be read or written.
class Position {
public:
    /// 0 where the file is missing or holds no whole number.
    explicit Position(boost::filesystem::path const& path);

    std::uint64_t Get() const noexcept { return number_; }
    void Set(std::uint64_t number);

    std::shared_ptr<File const> GetFile() const noexcept { return file_; }

private:
    std::shared_ptr<File> file_;
    std::uint64_t number_ = 0;
    std::uint64_t nextPlace_ = 0;
};

}  // namespace qel::serve::mqtt
