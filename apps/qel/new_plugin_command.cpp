#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "catalogue.hpp"
#include "command.hpp"
#include "error.hpp"
#include "output_file.hpp"
#include "plugins_option.hpp"
#include "qel/system/get_library_path.hpp"
#include "skeleton.hpp"
#include "text.hpp"

namespace qel::app {
namespace {

namespace files = std::filesystem;

struct Options {
    std::string name;
    bool inPlace = false;
};

/// Two algorithms whose names end alike could not be told apart on the command line.
void CheckIsFree(std::string const& name) {
    LoadPluginsOrWarn({});
    for (std::string const& taken : host::ListAlgorithms()) {
        if (!host::IsSameName(host::GetShortName(taken), name)) continue;
        throw host::UsageError("the name '" + name + "' is taken by the installed algorithm " + taken +
                               ": choose another");
    }
}

/// Makes the folder and the files in it; what was made of them is taken away again when that fails.
void Write(std::string const& folder, std::vector<host::SkeletonFile> const& skeleton) {
    if (mkdir(folder.c_str(), 0777) != 0) {
        if (errno == EEXIST) {
            throw host::UsageError("'" + folder + "' exists already: choose another name, or go to another folder");
        }
        throw host::Error("cannot make the folder '" + folder + "': " + std::strerror(errno));
    }
    try {
        for (host::SkeletonFile const& file : skeleton) {
            host::OutputFile output(folder + "/" + file.name);
            output.Write(file.text);
            output.Close();
        }
    } catch (...) {
        std::error_code ignored;
        files::remove_all(folder, ignored);
        throw;
    }
}

bool LiesIn(files::path const& path, files::path const& folder) {
    std::string const relative = path.lexically_relative(folder).string();
    return !relative.empty() && !relative.starts_with("..");
}

/// Whether CMake looks for packages in this folder of libraries without being told: in /usr, /usr/local and beside the
/// folders "bin" of the PATH.
bool IsSearchedByCMake(files::path const& libraries) {
    if (LiesIn(libraries, "/usr")) return true;
    char const* const path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code ignored;
        files::path const programs = files::weakly_canonical(folder, ignored);
        if (programs.filename() == "bin" && LiesIn(libraries, programs.parent_path())) return true;
    }
    return false;
}

/// The command that configures the project against the library that this program runs with.
std::string MakeConfigureCommand() {
    std::error_code ignored;
    files::path const libraries =
        files::weakly_canonical(system::GetLibraryPath("qel_algorithm").parent_path().string(), ignored);
    files::path const package = libraries / "cmake" / "qel";
    if (!files::exists(package / "qel-config.cmake", ignored)) {
        return "cmake -B build -DCMAKE_PREFIX_PATH=FOLDER   # where qel is installed with its headers: none are "
               "beside " +
               libraries.string();
    }
    if (IsSearchedByCMake(libraries)) return "cmake -B build";
    return "cmake -B build '-Dqel_DIR=" + package.string() + "'";
}

std::string DescribeNextSteps(Options const& options) {
    std::string const& name = options.name;
    return "\nNext:\n  cd " + name + "\n  " + MakeConfigureCommand() + "\n  cmake --build build\n  " +
           "qel run VIDEO --plugins build" + (options.inPlace ? " --algorithm motion --algorithm " + name : "") +
           " --annotate " + name + ".mp4\n" + "then make it yours: " + name + "/" + name + ".cpp\n";
}

int Make(Options const& options) {
    using host::SkeletonKind;
    auto const skeleton =
        host::MakeSkeleton(options.name, options.inPlace ? SkeletonKind::Inplace : SkeletonKind::Passthrough);
    CheckIsFree(options.name);
    Write(options.name, skeleton);
    std::string text;
    for (host::SkeletonFile const& file : skeleton) text += options.name + "/" + file.name + "\n";
    host::OutputFile output("-");
    output.Write(text + DescribeNextSteps(options));
    output.Close();
    return exit_code::Success;
}

}  // namespace

std::function<int()> AddNewPluginCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("new-plugin", "Writes the project of a plug-in of your own, ready to be built");
    auto const options = std::make_shared<Options>();
    command
        ->add_option("NAME", options->name,
                     "Name of the plug-in and of the folder that is made: lower-case letters, digits, underscores")
        ->required();
    command->add_flag("--in-place", options->inPlace,
                      "An algorithm that changes the frames, not one that looks at them");
    command->footer(
        "Example:\n  qel new-plugin hello && cd hello && cmake -B build && cmake --build build\n"
        "  qel run street.avi --plugins build --annotate hello.mp4");
    return [options] { return Make(*options); };
}

}  // namespace qel::app
