// Any bytes in place of a plug-in: read as a shared library, or refused with a reason.
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "check.hpp"
#include "qel/system/plugin/elf_file.hpp"

namespace {

/// A file in memory: the reader takes a path.
class MemoryFile {
public:
    MemoryFile() : file_(memfd_create("elf", 0)) {}
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;
    ~MemoryFile() { close(file_); }

    void Set(std::uint8_t const* data, std::size_t size) {
        qel::fuzz::Check(ftruncate(file_, 0) == 0 && pwrite(file_, data, size, 0) == static_cast<ssize_t>(size),
                         "the file in memory cannot be written");
    }
    std::string GetPath() const { return "/proc/self/fd/" + std::to_string(file_); }

private:
    int file_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static MemoryFile file;
    file.Set(data, size);
    try {
        qel::system::plugin::ReadElfFile(file.GetPath());
    } catch (std::runtime_error const& error) {
        qel::fuzz::Check(!std::string_view(error.what()).empty(), "no reason is given");
    }
    return 0;
}
