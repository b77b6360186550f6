#pragma once

#include <memory>
#include <optional>
#include <string>

#include <boost/filesystem/path.hpp>

#include "file.hpp"

namespace qel::serve {

/// The file of a configuration and those beside it: FILE.last-good, the last content that was in effect, and
/// FILE.broken, what a person had written that could not be used. Each is replaced in one step. FILE.lock is empty and
/// stays; who uses FILE holds a lock on it, which the system takes back however the process ends. One thread at a time.
class ConfigFile {
public:
    /// file: made absolute.
    explicit ConfigFile(boost::filesystem::path const& file);

    boost::filesystem::path const& GetPath() const noexcept { return file_; }
    boost::filesystem::path GetLastGoodPath() const { return Beside(".last-good"); }
    boost::filesystem::path GetBrokenPath() const { return Beside(".broken"); }

    /// Keeps all others who do the same from the file, until the object goes, and clears away what one that was killed
    /// has left in the middle of a change. Throws Error when somebody else was first.
    void Lock();
    /// The content; nothing when there is no such file. Throws Error when it cannot be read.
    std::optional<std::string> Read() const;
    /// The last content that was in effect; nothing when there is none that can be read.
    std::optional<std::string> ReadLastGood() const;

    /// Replaces the file, and then the last good one: what fails with that one is a line of the log.
    /// Throws Error when the file cannot be written; it is as it was then.
    void Save(std::string const& content) const;
    /// Makes this content the last good one. Throws Error when it cannot be written.
    void SaveLastGood(std::string const& content) const;
    /// Copies the file, if it is still there, to FILE.broken. Throws Error when that cannot be written.
    void KeepBroken() const;

private:
    boost::filesystem::path Beside(char const* ending) const { return file_.string() + ending; }

    boost::filesystem::path file_;
    std::unique_ptr<File const> lock_{};
};

}  // namespace qel::serve
