#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qel::test {

/// A folder of its own that goes, with all that is in it, when the object goes.
class TemporaryDirectory {
public:
    explicit TemporaryDirectory(std::filesystem::path const& base = std::filesystem::temp_directory_path()) {
        std::string pattern = (base / "qel-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a temporary directory");
        path_ = pattern;
    }
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    /// The path of a file in the folder.
    std::string operator/(std::string_view name) const { return (path_ / name).string(); }
    std::filesystem::path const& GetPath() const noexcept { return path_; }

private:
    std::filesystem::path path_;
};

inline std::string ReadFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(std::string const& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

/// Cuts a file down to its first bytes.
inline void CutFile(std::string const& path, std::uintmax_t size) { std::filesystem::resize_file(path, size); }

}  // namespace qel::test
