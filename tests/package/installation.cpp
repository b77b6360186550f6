#include "installation.hpp"

#include <stdexcept>

#include "support/process.hpp"

namespace qel::test {

namespace {

namespace fs = std::filesystem;

bool IsPlugin(fs::path const& file) { return file.filename().string().starts_with("libqel_algorithm_"); }

}  // namespace

Installation::Installation() {
    for (fs::directory_entry const& entry : fs::directory_iterator(QEL_TEST_LIBRARIES)) {
        if (entry.is_directory() || IsPlugin(entry)) continue;
        fs::copy(entry, GetFolder() / entry.path().filename(), fs::copy_options::copy_symlinks);
    }
}

fs::path Installation::AddPlugin(std::string const& plugin, std::string const& as) const {
    fs::path const wanted(plugin);
    auto const file = [](std::string const& name) { return "libqel_algorithm_" + name + ".so"; };
    fs::path const target = GetFolder() / file(as.empty() ? wanted.filename().string() : as);
    fs::copy(fs::path(QEL_TEST_PROJECTS) / wanted.parent_path() / file(wanted.filename().string()), target);
    return target;
}

std::string Installation::Probe(std::vector<std::string> const& arguments) const {
    return Run(QEL_TEST_PROJECTS "/plugins/probe", arguments);
}

std::string Installation::Qel(std::vector<std::string> const& arguments) const {
    return Run(QEL_TEST_PROGRAMS "/qel", arguments);
}

std::string Installation::Run(std::string const& program, std::vector<std::string> const& arguments) const {
    // The path goes before the folders that the program was linked with.
    Outcome const outcome = RunProcess({program, arguments, {{"LD_LIBRARY_PATH", GetFolder().string()}}});
    if (outcome.exitCode != 0 || !outcome.error.empty()) {
        throw std::runtime_error(program + " ended with " + std::to_string(outcome.exitCode) + ": " + outcome.output +
                                 outcome.error);
    }
    return outcome.output;
}

}  // namespace qel::test
