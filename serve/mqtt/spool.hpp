#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <boost/filesystem/path.hpp>

namespace qel::serve::mqtt {

/// A queue on the disk: what is put in comes out in order, also in a later process.
///
/// A record is taken, and leaves the queue when it is completed; what was taken and not completed is taken again after
/// Rewind or by the next process. When the queue is full the oldest records are lost, a sixteenth of the queue at once,
/// and counted. Several files of records lie in the folder (segment.hpp tells their format), beside "position", the
/// number of the last record that was completed.
///
/// What Append and Complete did survives the end of the process, however it ends, at once; a power failure from the
/// next Sync on. A record that was cut short is left out, the ones before it are kept. Any thread.
class Spool {
public:
    struct Record {
        /// Which opening of the queue the record was put into; by chance, differs for each.
        std::uint64_t run = 0;
        /// Counts up by one with each record, from 1, also from process to process.
        std::uint64_t number = 0;
        std::string bytes{};
    };

    struct Counts {
        /// Records that are not completed.
        std::uint64_t messages = 0;
        /// What the files of records take.
        std::uint64_t bytes = 0;
        /// Records that were put in, or should have been, and will not come out, since the queue was opened.
        std::uint64_t lost = 0;
    };

    /// Opens the queue in a folder, which is made where it is missing; reads all that is in it.
    /// maxBytes: of all files of records, at least 4096. Throws host::Error when the folder cannot be used or is in
    /// use.
    Spool(boost::filesystem::path folder, std::uint64_t maxBytes);
    /// Syncs.
    ~Spool();
    Spool(Spool const&) = delete;
    Spool& operator=(Spool const&) = delete;

    /// Puts a record in, whole or not at all. Throws host::Error when it cannot be stored, or is larger than a
    /// sixteenth of the queue; it is lost then.
    void Append(std::string_view bytes);
    /// The oldest record that was not taken yet; nothing when there is none.
    std::optional<Record> Take();
    /// Completes the taken records up to this number, inclusive.
    void Complete(std::uint64_t number);
    /// Begins to take with the oldest record that is not completed.
    void Rewind();
    /// Waits until everything is on the disk. Others go on meanwhile.
    void Sync();

    Counts GetCounts() const;
    /// Sixteen hexadecimal digits, made by chance with the folder.
    std::string const& GetId() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve::mqtt
