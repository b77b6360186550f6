#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <boost/filesystem/path.hpp>

#include "file.hpp"

namespace qel::serve::mqtt {

/// One file of a spool: records that follow each other, numbered from the file's first number on. Numbers are stored
/// lowest byte first.
///
///     name     first number, 20 decimal digits, ".segment"
///     header   "QELSPOOL", run (8 bytes), first number (8 bytes), CRC-32 of these 24 bytes (4 bytes)
///     record   length n (4 bytes), CRC-32 of the length, the record's number and its bytes (4 bytes), n bytes
///
/// One thread at a time. Throws host::Error when the file cannot be read or written.
class Segment {
public:
    static constexpr std::uint64_t HeaderSize = 28;
    static constexpr std::uint64_t RecordHeaderSize = 8;

    /// Makes the file; nothing is left of it when that fails.
    static std::shared_ptr<Segment> Create(boost::filesystem::path const& folder, std::uint64_t run,
                                           std::uint64_t first);
    /// Reads the file up to its first record that is not whole. Null where the header is not whole.
    static std::shared_ptr<Segment> Open(boost::filesystem::path const& path);
    /// Whether the name is that of a segment.
    static bool IsName(std::string_view name);

    /// Stores the record of the next number, whole or not at all.
    void Append(std::string_view bytes);
    /// The record that begins at an offset; nothing where it is not whole.
    std::optional<std::string> Read(std::uint64_t offset, std::uint64_t number);
    /// Where a record begins. Requires first <= number <= first + count; not checked.
    std::uint64_t FindOffset(std::uint64_t number);
    /// Gives up the records from this number on.
    void CutAt(std::uint64_t number, std::uint64_t offset);
    /// Closes the file until it is read again.
    void Rest() { file_.reset(); }
    /// Deletes the file.
    void Remove();

    std::uint64_t GetRun() const noexcept { return run_; }
    std::uint64_t GetFirst() const noexcept { return first_; }
    /// The number behind that of the last record.
    std::uint64_t GetEnd() const noexcept { return end_; }
    /// Bytes of the header and all whole records.
    std::uint64_t GetSize() const noexcept { return size_; }
    /// The open file, for Sync; null when it rests.
    std::shared_ptr<File const> GetFile() const noexcept { return file_; }

private:
    Segment(boost::filesystem::path path, std::shared_ptr<File> file, std::uint64_t run, std::uint64_t first);
    File& Wake();

    boost::filesystem::path path_;
    std::shared_ptr<File> file_;
    std::uint64_t run_;
    std::uint64_t first_;
    std::uint64_t end_;
    std::uint64_t size_ = HeaderSize;
};

}  // namespace qel::serve::mqtt
