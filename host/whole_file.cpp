#include "whole_file.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "error.hpp"
#include "qel/system/descriptor.hpp"

namespace qel::host {
namespace {

[[noreturn]] void Fail(char const* what, std::string const& path, int error) {
    throw Error(std::string("cannot ") + what + " '" + path + "': " + std::strerror(error));
}

bool WriteAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        ssize_t const count = write(descriptor, content.data(), content.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        content.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// The rights that a new file of this path gets: those of the old one, or the usual ones.
mode_t GetMode(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) return status.st_mode & 07777;
    mode_t const mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

constexpr std::string_view Unfinished = ".unfinished-";
constexpr std::string_view Chance = "XXXXXX";

/// A link stays a link: what it points to is replaced.
std::string Resolve(std::string const& path) {
    std::error_code ignored;
    std::filesystem::path const resolved = std::filesystem::weakly_canonical(path, ignored);
    return resolved.empty() ? path : resolved.string();
}

/// Makes the change of a name last; best effort, as not every file system lets a folder be opened.
void SyncFolder(std::filesystem::path const& file) {
    std::filesystem::path const folder = file.has_parent_path() ? file.parent_path() : ".";
    system::Descriptor const descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor) fsync(descriptor.Get());
}

}  // namespace

std::string ReadFile(std::string const& path, std::size_t maximumSize) {
    system::Descriptor const descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor) Fail("read", path, errno);
    std::string content;
    char buffer[4096];
    for (;;) {
        ssize_t const count = read(descriptor.Get(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail("read", path, errno);
        if (count == 0) return content;
        content.append(buffer, static_cast<std::size_t>(count));
        if (content.size() > maximumSize) {
            throw Error("cannot read '" + path + "': it is larger than " + std::to_string(maximumSize) + " bytes");
        }
    }
}

void ReplaceFile(std::string const& path, std::string_view content) {
    std::string const target = Resolve(path);
    std::string temporary = target + std::string(Unfinished) + std::string(Chance);
    system::Descriptor descriptor(mkostemp(temporary.data(), O_CLOEXEC));
    if (!descriptor) Fail("write", path, errno);
    bool const stored = WriteAll(descriptor.Get(), content) && fchmod(descriptor.Get(), GetMode(target)) == 0 &&
                        fsync(descriptor.Get()) == 0 && descriptor.Close() &&
                        std::rename(temporary.c_str(), target.c_str()) == 0;
    if (!stored) {
        int const error = errno;
        unlink(temporary.c_str());
        Fail("write", path, error);
    }
    SyncFolder(target);
}

void RemoveUnfinished(std::string const& path) {
    std::filesystem::path const target = Resolve(path);
    std::string const start = target.filename().string() + std::string(Unfinished);
    std::error_code error;
    std::filesystem::directory_iterator entry(target.has_parent_path() ? target.parent_path() : ".", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::string const name = entry->path().filename().string();
        std::error_code ignored;
        if (name.size() == start.size() + Chance.size() && name.starts_with(start)) {
            std::filesystem::remove(entry->path(), ignored);
        }
    }
}

}  // namespace qel::host
