#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qel::host {

/// A file of the example that every skeleton is made from; the text is built into the program.
struct TemplateFile {
    char const* name;
    char const* text;
};

/// The files of examples/plugin, ended by one of two null pointers.
extern TemplateFile const SkeletonTemplate[];

/// Which of the example's algorithms a skeleton starts from.
enum class SkeletonKind {
    Passthrough,  ///< looks at the frames
    Inplace,      ///< changes the frames
};

/// A file of a project, to be written.
struct SkeletonFile {
    std::string name;
    std::string text;
};

/// The files of a project that builds the plug-in libqel_algorithm_<name>.so, with a working algorithm in it.
/// name: lower-case letters, digits and single underscores, such as find_faces; the algorithm is then
/// example.FindFaces. Throws UsageError for any other name, and for one that means something else there.
std::vector<SkeletonFile> MakeSkeleton(std::string_view name, SkeletonKind kind);

/// The name of the algorithm's class: "FindFaces" for "find_faces".
std::string ToClassName(std::string_view name);

}  // namespace qel::host
