#include "installation.hpp"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace qel::test {

namespace {

namespace fs = std::filesystem;

fs::path MakeFolder() {
    std::string name = (fs::temp_directory_path() / "qel-package-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make the folder " + name);
    return fs::canonical(name);
}

bool IsPlugin(fs::path const& file) { return file.filename().string().starts_with("libqel_algorithm_"); }

}  // namespace

Installation::Installation() : folder_(MakeFolder()) {
    for (fs::directory_entry const& entry : fs::directory_iterator(QEL_TEST_LIBRARIES)) {
        if (entry.is_directory() || IsPlugin(entry)) continue;
        fs::copy(entry, folder_ / entry.path().filename(), fs::copy_options::copy_symlinks);
    }
}

Installation::~Installation() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

fs::path Installation::AddPlugin(std::string const& plugin, std::string const& as) const {
    fs::path const wanted(plugin);
    auto const file = [](std::string const& name) { return "libqel_algorithm_" + name + ".so"; };
    fs::path const target = folder_ / file(as.empty() ? wanted.filename().string() : as);
    fs::copy(fs::path(QEL_TEST_PROJECTS) / wanted.parent_path() / file(wanted.filename().string()), target);
    return target;
}

std::string Installation::Probe(std::string const& arguments) const {
    std::string const command =
        "LD_LIBRARY_PATH='" + folder_.string() + "' '" QEL_TEST_PROJECTS "/plugins/probe' " + arguments + " 2>&1";
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) output += static_cast<char>(c);
    if (pclose(pipe) != 0) throw std::runtime_error(command + " failed: " + output);
    return output;
}

}  // namespace qel::test
