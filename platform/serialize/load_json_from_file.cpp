#include "qel/serialize/load_json_from_file.hpp"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "qel/serialize/check_json.hpp"

namespace qel::serialize::detail {

namespace {

/// A file that is open for reading. A pipe without a writer counts as an empty file: nothing here may wait for ever.
class InputFile {
public:
    explicit InputFile(boost::filesystem::path const& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
        if (descriptor_ < 0) throw cereal::Exception(path.string() + ": the file cannot be opened");
    }
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;
    ~InputFile() { close(descriptor_); }

    /// The number of bytes read, 0 at the end, negative for an error.
    ssize_t Read(char* target, std::size_t size) const {
        ssize_t count = 0;
        do {
            count = read(descriptor_, target, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int descriptor_;
};

std::string Load(boost::filesystem::path const& path) {
    InputFile const file(path);
    std::string text;
    std::array<char, 65536> block;
    while (true) {
        ssize_t const count = file.Read(block.data(), block.size());
        // A directory, for one, opens but cannot be read.
        if (count < 0) throw cereal::Exception(path.string() + ": the file cannot be read");
        if (count == 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > MaximumFileSize) {
            throw cereal::Exception(path.string() + ": the file is larger than " + std::to_string(MaximumFileSize) +
                                    " bytes");
        }
    }
}

}  // namespace

std::string LoadJsonText(boost::filesystem::path const& path) {
    std::string text = Load(path);
    try {
        CheckJson(text);
    } catch (cereal::Exception const& error) {
        throw cereal::Exception(path.string() + ": " + error.what());
    }
    return text;
}

}  // namespace qel::serialize::detail
