#include "qel/system/plugin/load_all.hpp"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <dlfcn.h>
#include <sys/stat.h>

#include "loaded_libraries.hpp"
#include "plugin/access.hpp"
#include "plugin/collector.hpp"
#include "plugin/explain.hpp"
#include "plugin/terminate_guard.hpp"
#include "qel/system/plugin/elf_file.hpp"
#include "qel/system/plugin/find_candidates.hpp"
#include "qel/system/plugin/load_error.hpp"
#include "qel/system/plugin/load_file.hpp"

namespace qel::system::plugin {
namespace {

namespace fs = boost::filesystem;

using FileId = std::pair<dev_t, ino_t>;

/// Who the file is, whatever the path that leads to it.
std::optional<FileId> Identify(fs::path const& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) return std::nullopt;
    return FileId(status.st_dev, status.st_ino);
}

/// The name up to and with ".so": "libz.so" for "libz.so.1".
std::string GetStem(std::string const& name) {
    auto const end = name.find(".so");
    return end == std::string::npos ? name : name.substr(0, end + 3);
}

/// The soname of a library that is loaded; its file name when the file has none or is gone.
std::string GetSoname(fs::path const& library) {
    std::string soname;
    try {
        soname = ReadElfFile(library).soname;
    } catch (std::runtime_error const&) {
        // Replaced or removed since it was loaded: the name says enough.
    }
    return soname.empty() ? library.filename().string() : soname;
}

/// Two versions of one of our own libraries in one process would mean two registries: the plug-in would enter itself
/// into the one that nobody reads.
void CheckOwnLibraries(std::vector<std::string> const& needed) {
    for (fs::path const& library : GetLoadedLibraries()) {
        std::string const stem = GetStem(library.filename().string());
        if (!stem.starts_with("libqel_")) continue;
        for (std::string const& name : needed) {
            if (GetStem(name) != stem || name == GetSoname(library)) continue;
            throw std::runtime_error("was built against " + name + ", while this process runs " + GetSoname(library) +
                                     ": build it again for this version");
        }
    }
}

/// No exception gets out: the loader would keep its lock. dlopen is declared as one that never throws, and compilers
/// differ in what they make of an exception that comes out of it all the same; through a pointer it is stopped here.
void* Open(fs::path const& file) noexcept {
    void* (*volatile open)(char const*, int) = &dlopen;
    return open(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void Load(fs::path const& file) {
    CheckRegularFile(file);
    CheckNotWritableByOthers(file);
    CheckOwnLibraries(ReadElfFile(file).needed);
    TerminateGuard const guard(file);
    if (Open(file) == nullptr) {
        throw std::runtime_error(Explain(dlerror(), file.string()));
    }
}

void TryLoad(fs::path const& file, Collector& collector) {
    try {
        Load(file);
    } catch (std::runtime_error const& error) {
        collector.Add({file, error.what()});
    }
}

void ThrowProblems(Collector& collector) {
    if (!collector.GetProblems().empty()) throw LoadError(std::move(collector.GetProblems()));
}

}  // namespace

std::vector<fs::path> FindCandidates(std::string const& prefix, fs::path const& directory) {
    std::string const start = "lib" + prefix, end = ".so";
    std::vector<fs::path> candidates;
    for (fs::directory_entry const& entry : fs::directory_iterator(fs::absolute(directory))) {
        std::string const name = entry.path().filename().string();
        if (name.size() >= start.size() + end.size() && name.starts_with(start) && name.ends_with(end)) {
            candidates.push_back(entry.path());
        }
    }
    std::sort(candidates.begin(), candidates.end());
    return candidates;
}

void LoadFile(fs::path const& file) {
    Collector collector;
    TryLoad(fs::absolute(file), collector);
    ThrowProblems(collector);
}

bool IsLoaded(fs::path const& file) {
    void* const library = dlopen(fs::absolute(file).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr) dlclose(library);  // NOLOAD counts one more user
    return library != nullptr;
}

void LoadAll(std::string const& prefix, std::vector<fs::path> const& directories) {
    Collector collector;
    std::set<FileId> met;
    for (fs::path const& directory : directories) {
        std::vector<fs::path> candidates;
        try {
            candidates = FindCandidates(prefix, directory);
        } catch (fs::filesystem_error const& error) {
            collector.Add({directory, "cannot be searched for plug-ins: " + error.code().message()});
        }
        for (fs::path const& file : candidates) {
            auto const id = Identify(file);
            if (!id || met.insert(*id).second) TryLoad(file, collector);
        }
    }
    ThrowProblems(collector);
}

}  // namespace qel::system::plugin
