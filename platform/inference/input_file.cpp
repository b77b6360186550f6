#include "input_file.hpp"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

namespace qel::inference {

system::Descriptor OpenRegularFile(boost::filesystem::path const& path, std::size_t maximumSize) {
    system::Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file) throw std::runtime_error(std::string("cannot be opened: ") + std::strerror(errno));
    struct stat status {};
    if (fstat(file.Get(), &status) != 0)
        throw std::runtime_error(std::string("cannot be read: ") + std::strerror(errno));
    if (!S_ISREG(status.st_mode)) throw std::runtime_error("is no regular file");
    if (static_cast<std::size_t>(status.st_size) > maximumSize) RefuseSize(maximumSize);
    return file;
}

std::string ReadRegularFile(boost::filesystem::path const& path, std::size_t maximumSize) {
    system::Descriptor const file = OpenRegularFile(path, maximumSize);
    std::string text;
    std::array<char, 65536> block;
    while (true) {
        ssize_t const count = read(file.Get(), block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw std::runtime_error(std::string("cannot be read: ") + std::strerror(errno));
        if (count == 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > maximumSize) RefuseSize(maximumSize);
    }
}

void RefuseSize(std::size_t maximumSize) {
    throw std::runtime_error("is larger than " + std::to_string(maximumSize) + " bytes");
}

}  // namespace qel::inference
