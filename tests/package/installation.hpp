#pragma once

#include <filesystem>
#include <string>

namespace qel::test {

/// A folder of its own with copies of the installed libraries, but of no plug-in; removed with the object.
class Installation {
public:
    Installation();
    Installation(Installation const&) = delete;
    Installation& operator=(Installation const&) = delete;
    ~Installation();

    std::filesystem::path const& GetFolder() const { return folder_; }

    /// Copies a built plug-in, "project/name", beside the libraries and returns its file; as: under another name.
    std::filesystem::path AddPlugin(std::string const& plugin, std::string const& as = "") const;

    /// Runs the program probe of the fixtures with these libraries; returns all that it writes. Throws
    /// std::runtime_error when it does not end well.
    std::string Probe(std::string const& arguments = "") const;

private:
    std::filesystem::path folder_;
};

}  // namespace qel::test
