#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include <boost/filesystem/operations.hpp>

#include "qel/system/plugin/load_all.hpp"
#include "qel/system/plugin/load_error.hpp"

namespace qel::system::plugin {

/// A folder of its own for a test, gone with it.
class Folder {
public:
    Folder()
        : path_(boost::filesystem::canonical(boost::filesystem::temp_directory_path()) /
                boost::filesystem::unique_path("qel-system-%%%%%%%%")) {
        boost::filesystem::create_directory(path_);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() { boost::filesystem::remove_all(path_); }

    boost::filesystem::path const& GetPath() const { return path_; }
    boost::filesystem::path operator/(std::string const& name) const { return path_ / name; }

    /// Copies a plug-in built for the tests into the folder.
    boost::filesystem::path Add(std::string const& fixture, std::string const& name) const {
        boost::filesystem::copy_file(boost::filesystem::path(FIXTURES) / (fixture + ".so"), path_ / name);
        return path_ / name;
    }
    boost::filesystem::path Write(std::string const& name, std::string const& bytes) const {
        std::ofstream((path_ / name).string(), std::ios::binary) << bytes;
        return path_ / name;
    }

private:
    boost::filesystem::path path_;
};

inline std::string ReadFile(boost::filesystem::path const& file) {
    std::ifstream stream(file.string(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The problems that loading the plug-ins libtest_*.so of the directories meets.
inline std::vector<Problem> Load(std::vector<boost::filesystem::path> const& directories) {
    try {
        LoadAll("test_", directories);
    } catch (LoadError const& error) {
        return error.GetProblems();
    }
    return {};
}

}  // namespace qel::system::plugin
