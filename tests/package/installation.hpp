#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/temporary_directory.hpp"

namespace qel::test {

/// A folder of its own with copies of the installed libraries, but of no plug-in; removed with the object.
class Installation {
public:
    Installation();

    std::filesystem::path const& GetFolder() const { return folder_.GetPath(); }

    /// Copies a built plug-in, "project/name", beside the libraries and returns its file; as: under another name.
    std::filesystem::path AddPlugin(std::string const& plugin, std::string const& as = "") const;

    /// Runs the program probe of the fixtures with these libraries; returns all that it writes. Throws
    /// std::runtime_error when it does not end well.
    std::string Probe(std::vector<std::string> const& arguments = {}) const;
    /// The same with the installed program qel.
    std::string Qel(std::vector<std::string> const& arguments) const;

private:
    std::string Run(std::string const& program, std::vector<std::string> const& arguments) const;

    TemporaryDirectory folder_;
};

}  // namespace qel::test
