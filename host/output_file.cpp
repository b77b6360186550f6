#include "output_file.hpp"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "error.hpp"

namespace qel::host {

OutputFile::OutputFile(std::string path) : name_(path == "-" ? "the standard output" : "'" + path + "'") {
    descriptor_ = system::Descriptor(path == "-" ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                                 : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!descriptor_) Fail(errno);
}

void OutputFile::Write(std::string_view bytes) {
    std::string_view rest = bytes;
    while (!rest.empty()) {
        ssize_t const count = write(descriptor_.Get(), rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
            continue;
        }
        int const error = errno;
        if (error == EINTR) continue;
        if (error == EAGAIN || error == EWOULDBLOCK) {
            pollfd waiting{descriptor_.Get(), POLLOUT, 0};
            poll(&waiting, 1, -1);
            continue;
        }
        TakeBack(bytes.size() - rest.size());
        Fail(error);
    }
}

bool OutputFile::HasReader() const noexcept {
    pollfd state{descriptor_.Get(), 0, 0};
    return poll(&state, 1, 0) <= 0 || (state.revents & (POLLERR | POLLHUP)) == 0;
}

void OutputFile::TakeBack(std::size_t count) const noexcept {
    if (count == 0) return;
    // What is no regular file has no position, and nothing to be taken off again.
    off_t const end = lseek(descriptor_.Get(), 0, SEEK_CUR);
    auto const length = static_cast<off_t>(count);
    if (end >= length && ftruncate(descriptor_.Get(), end - length) == 0)
        lseek(descriptor_.Get(), end - length, SEEK_SET);
}

void OutputFile::Close() {
    if (descriptor_ && !descriptor_.Close()) Fail(errno);
}

void OutputFile::Fail(int error) const { throw Error("cannot write " + name_ + ": " + std::strerror(error)); }

}  // namespace qel::host
