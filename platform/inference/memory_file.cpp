#include "memory_file.hpp"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>

#include "input_file.hpp"

namespace qel::inference {
namespace {

[[noreturn]] void Fail(std::string const& what) { throw std::runtime_error(what + ": " + std::strerror(errno)); }

void Copy(int from, int to, std::size_t maximumSize) {
    // A file that grows meanwhile is cut off one byte behind the limit, which is noticed.
    std::size_t rest = maximumSize + 1;
    while (rest > 0) {
        ssize_t const count = sendfile(to, from, nullptr, rest);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail("cannot be read");
        if (count == 0) return;
        rest -= static_cast<std::size_t>(count);
    }
    RefuseSize(maximumSize);
}

}  // namespace

MemoryFile::MemoryFile(boost::filesystem::path const& path, std::size_t maximumSize) {
    system::Descriptor const file = OpenRegularFile(path, maximumSize);
    descriptor_ = system::Descriptor(memfd_create("qel-model", MFD_CLOEXEC));
    if (!descriptor_) Fail("cannot be copied to memory");
    Copy(file.Get(), descriptor_.Get(), maximumSize);
    Show();
}

MemoryFile::MemoryFile(system::Descriptor descriptor) : descriptor_(std::move(descriptor)) { Show(); }

MemoryFile::~MemoryFile() {
    if (bytes_ != nullptr) munmap(bytes_, size_);
}

void MemoryFile::Show() {
    struct stat status {};
    if (fstat(descriptor_.Get(), &status) != 0) Fail("cannot be measured");
    size_ = static_cast<std::size_t>(status.st_size);
    if (size_ == 0) return;
    void* const bytes = mmap(nullptr, size_, PROT_READ, MAP_SHARED, descriptor_.Get(), 0);
    if (bytes == MAP_FAILED) Fail("cannot be shown in memory");
    bytes_ = bytes;
}

}  // namespace qel::inference
