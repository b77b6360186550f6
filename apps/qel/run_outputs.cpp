#include "run_outputs.hpp"

#include <filesystem>
#include <system_error>
#include <vector>

#include <boost/algorithm/string/predicate.hpp>

#include "error.hpp"

namespace qel::app {
namespace {

namespace files = std::filesystem;

/// Whether two paths lead to one file; neither needs to exist yet.
bool IsSameFile(std::string const& left, std::string const& right) {
    std::error_code ignored;
    if (files::is_regular_file(left, ignored)) return files::equivalent(left, right, ignored);
    if (files::exists(left, ignored)) return left == right;
    return files::weakly_canonical(files::absolute(left), ignored) ==
           files::weakly_canonical(files::absolute(right), ignored);
}

void CheckEnding(char const* option, std::string const& path, char const* ending, char const* format) {
    std::error_code ignored;
    bool const isOther = files::exists(path, ignored) && !files::is_regular_file(path, ignored);
    if (path.empty() || isOther || boost::algorithm::iends_with(path, ending)) return;
    throw host::UsageError("'" + path + "' does not end in " + ending + ": " + option + " writes " + format +
                           "; name '" + files::path(path).replace_extension(ending).string() + "'");
}

}  // namespace

void CheckRunOutputs(RunOutputs const& outputs, host::Location const& location, std::string const& calibration) {
    if (outputs.video == "-" || outputs.picture == "-") {
        throw host::UsageError("only --output can be '-', the standard output; name a file");
    }
    std::vector<std::string> taken;
    if (location.file) taken.push_back(*location.file);
    if (!calibration.empty()) taken.push_back(calibration);
    for (std::string const& path :
         {outputs.results == "-" ? std::string() : outputs.results, outputs.video, outputs.picture}) {
        if (path.empty()) continue;
        for (std::string const& other : taken) {
            if (!IsSameFile(path, other)) continue;
            if (location.file && other == *location.file) {
                throw host::UsageError("'" + path + "' is the video itself; write the results to another file");
            }
            if (other == calibration) {
                throw host::UsageError("'" + path + "' is the calibration; write the results to another file");
            }
            throw host::UsageError("'" + path + "' is named for two outputs");
        }
        taken.push_back(path);
    }
    CheckEnding("--annotate", outputs.video, ".mp4", "MP4");
    CheckEnding("--snapshot", outputs.picture, ".png", "PNG");
}

}  // namespace qel::app
