#include "plugin/access.hpp"

#include <atomic>
#include <stdexcept>
#include <string>

#include <boost/filesystem/operations.hpp>
#include <sys/stat.h>

#include "qel/system/plugin/writable_by_others.hpp"

namespace qel::system::plugin {
namespace {

namespace fs = boost::filesystem;

std::atomic<bool> writableByOthersAllowed = false;

/// The permission bits of what a path leads to; none when that cannot be told.
mode_t GetMode(fs::path const& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

[[noreturn]] void Refuse(std::string const& what, std::string const& mend) {
    throw std::runtime_error(what +
                             " can be written by every user, who could change what this process runs: take the "
                             "permission away (chmod o-w " +
                             mend + "), or allow such plug-ins");
}

}  // namespace

void CheckRegularFile(fs::path const& file) {
    boost::system::error_code error;
    fs::file_status const status = fs::status(file, error);
    if (status.type() == fs::file_not_found) {
        if (!fs::is_symlink(file)) throw std::runtime_error("does not exist");
        throw std::runtime_error("is a link to " + fs::read_symlink(file).string() + ", which does not exist");
    }
    if (status.type() == fs::directory_file) throw std::runtime_error("is a directory, not a shared library");
    if (status.type() == fs::status_error) throw std::runtime_error("cannot be read: " + error.message());
    if (status.type() != fs::regular_file) throw std::runtime_error("is not a regular file");
}

void AllowWritableByOthers(bool allow) noexcept { writableByOthersAllowed = allow; }

void CheckNotWritableByOthers(fs::path const& file) {
    if (writableByOthersAllowed) return;
    // A link's own folder counts as well as that of the file it leads to: in either, another file could be put there.
    fs::path const target = fs::canonical(file);
    if ((GetMode(target) & S_IWOTH) != 0) Refuse("the file", target.string());
    for (fs::path const& folder : {file.parent_path(), target.parent_path()}) {
        mode_t const mode = GetMode(folder);
        if ((mode & S_IWOTH) != 0 && (mode & S_ISVTX) == 0) Refuse("its folder", folder.string());
    }
}

}  // namespace qel::system::plugin
