#include "file.hpp"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "error.hpp"

namespace qel::serve {
namespace {

int ToFlags(File::Mode mode) {
    switch (mode) {
        case File::Mode::Read:
            return O_RDONLY | O_CLOEXEC;
        case File::Mode::Update:
            return O_RDWR | O_CREAT | O_CLOEXEC;
        case File::Mode::Create:
            break;
    }
    return O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
}

}  // namespace

File::File(boost::filesystem::path path, Mode mode) : path_(std::move(path)) {
    descriptor_ = open(path_.c_str(), ToFlags(mode), 0600);
    if (descriptor_ < 0) Fail("open", errno);
}

File::~File() { close(descriptor_); }

std::string File::ReadAt(std::uint64_t offset, std::size_t size) const {
    std::string bytes(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        ssize_t const count = pread(descriptor_, bytes.data() + done, size - done, static_cast<off_t>(offset + done));
        if (count == 0) break;
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            Fail("read", errno);
        }
    }
    bytes.resize(done);
    return bytes;
}

void File::WriteAt(std::uint64_t offset, std::string_view bytes) {
    std::uint64_t const before = GetSize();
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t const count =
            pwrite(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
            continue;
        }
        int const error = errno;
        if (error == EINTR) continue;
        // Where this fails too, the next write goes over what is left.
        [[maybe_unused]] int const cut = ftruncate(descriptor_, static_cast<off_t>(before));
        Fail("write", error);
    }
}

std::uint64_t File::GetSize() const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) Fail("examine", errno);
    return static_cast<std::uint64_t>(status.st_size);
}

void File::Sync() const {
    while (fdatasync(descriptor_) != 0) {
        if (errno != EINTR) Fail("write", errno);
    }
}

bool File::Lock() const {
    if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK) Fail("lock", errno);
    return false;
}

void File::Fail(char const* what, int error) const {
    throw host::Error(std::string("cannot ") + what + " '" + path_.string() + "': " + std::strerror(error));
}

void SyncFolder(boost::filesystem::path const& folder) { File(folder, File::Mode::Read).Sync(); }

}  // namespace qel::serve
