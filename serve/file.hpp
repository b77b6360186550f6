#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <boost/filesystem/path.hpp>

namespace qel::serve {

/// An open file that is read and written by position. Throws host::Error with its name and the reason.
class File {
public:
    enum class Mode {
        Read,    ///< must be there
        Update,  ///< for reading and writing; made when it is missing, readable by its owner only
        Create   ///< the same; must not be there
    };

    File(boost::filesystem::path path, Mode mode);
    File(File const&) = delete;
    File& operator=(File const&) = delete;
    ~File();

    /// The bytes from offset on: fewer than size at the end of the file.
    std::string ReadAt(std::uint64_t offset, std::size_t size) const;
    /// Writes all bytes; what a failed call left of them behind the former end is cut off again, if that is possible.
    void WriteAt(std::uint64_t offset, std::string_view bytes);
    std::uint64_t GetSize() const;
    /// Waits until what was written is on the disk.
    void Sync() const;
    /// Whether nobody else holds the file; keeps it from others until it is closed.
    bool Lock() const;

    boost::filesystem::path const& GetPath() const noexcept { return path_; }

private:
    [[noreturn]] void Fail(char const* what, int error) const;

    boost::filesystem::path path_;
    int descriptor_ = -1;
};

/// Waits until the names of the files in a folder are on the disk.
void SyncFolder(boost::filesystem::path const& folder);

}  // namespace qel::serve
