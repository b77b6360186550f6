#include "skeleton.hpp"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"

namespace qel::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> NamesOf(std::vector<SkeletonFile> const& files) {
    std::vector<std::string> names;
    for (SkeletonFile const& file : files) names.push_back(file.name);
    return names;
}

std::string TextOf(std::vector<SkeletonFile> const& files) {
    std::string text;
    for (SkeletonFile const& file : files) text += file.text;
    return text;
}

std::string TemplateText(std::string const& name) {
    for (TemplateFile const* file = SkeletonTemplate; file->name != nullptr; ++file) {
        if (file->name == name) return file->text;
    }
    return "there is no " + name;
}

TEST(Skeleton, IsTheExampleWithOnePluginOfAnotherName) {
    auto const files = MakeSkeleton("find_faces", SkeletonKind::Passthrough);
    EXPECT_THAT(NamesOf(files), ElementsAre("CMakeLists.txt", "README.md", "find_faces.cpp"));
    EXPECT_EQ(files[0].text,
              "cmake_minimum_required(VERSION 3.25)\n"
              "project(find_faces LANGUAGES CXX)\n\n"
              "if(NOT CMAKE_BUILD_TYPE)\n  set(CMAKE_BUILD_TYPE Release)\nendif()\n"
              "find_package(qel 1 CONFIG REQUIRED COMPONENTS algorithm)\n\n"
              "# Each makes a file libqel_algorithm_NAME.so, which `qel run --plugins build` loads.\n"
              "qel_add_plugin(find_faces SOURCES find_faces.cpp)\n");
    EXPECT_THAT(files[2].text, AllOf(HasSubstr("TypeName = \"example.FindFaces\";"),
                                     HasSubstr("class FindFaces final : public video::passthrough::Algorithm"),
                                     HasSubstr("&FindFaces::SetThreshold")));
}

TEST(Skeleton, ThatChangesFramesStartsFromTheOtherAlgorithm) {
    auto const files = MakeSkeleton("blur", SkeletonKind::Inplace);
    EXPECT_THAT(NamesOf(files), ElementsAre("CMakeLists.txt", "README.md", "blur.cpp"));
    EXPECT_THAT(files[0].text, HasSubstr("\nqel_add_plugin(blur SOURCES blur.cpp)\n"));
    EXPECT_THAT(files[2].text, HasSubstr("class Blur final : public video::inplace::Algorithm"));
}

TEST(Skeleton, NamesNothingOfTheExample) {
    for (SkeletonKind const kind : {SkeletonKind::Passthrough, SkeletonKind::Inplace}) {
        std::string const text = TextOf(MakeSkeleton("find_faces", kind));
        for (char const* name : {"example_plugin", "bright_spots", "BrightSpots", "spotlight", "Spotlight"}) {
            EXPECT_THAT(text, Not(HasSubstr(name)));
        }
        EXPECT_THAT(text, HasSubstr("`find_faces.cpp`"));
    }
}

TEST(Skeleton, OfTheExamplesOwnNameHasItsSourceUnchanged) {
    EXPECT_EQ(MakeSkeleton("bright_spots", SkeletonKind::Passthrough)[2].text, TemplateText("bright_spots.cpp"));
    EXPECT_EQ(MakeSkeleton("spotlight", SkeletonKind::Inplace)[2].text, TemplateText("spotlight.cpp"));
}

TEST(Skeleton, MakesTheClassNameOfTheParts) {
    EXPECT_EQ(ToClassName("hello"), "Hello");
    EXPECT_EQ(ToClassName("find_red_cars"), "FindRedCars");
    EXPECT_EQ(ToClassName("v2_of_4k"), "V2Of4k");
}

TEST(Skeleton, RefusesNamesThatCannotBe) {
    std::string const spelling =
        "it must start with a lower-case letter and hold lower-case letters, digits and single underscores between "
        "them, such as find_faces";
    struct Case {
        std::string name, why;
    };
    auto const taken = [](std::string const& className) {
        return "its class would be " + className +
               ", which stands for something else in the code already; choose another";
    };
    Case const cases[] = {
        {"", spelling},
        {"Hello", spelling},
        {"4k", spelling},
        {"_x", spelling},
        {"x_", spelling},
        {"a__b", spelling},
        {"find-faces", spelling},
        {"../hello", spelling},
        {"a b", spelling},
        {"caf\xc3\xa9", spelling},
        {std::string(65, 'a'), "it has more than 64 characters"},
        {"qel_algorithm_hello", "libqel_algorithm_... is put before it anyway; leave qel_algorithm_ away"},
        {"qel", "the library's own CMake package is called so; choose another"},
        {"algorithm", taken("Algorithm")},
        {"type_name", taken("TypeName")},
        {"process", taken("Process")},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(test::MessageOf<UsageError>([&] { MakeSkeleton(c.name, SkeletonKind::Passthrough); }),
                  "'" + c.name + "' cannot be the name of a plug-in: " + c.why);
    }
    EXPECT_EQ(MakeSkeleton(std::string(64, 'a'), SkeletonKind::Passthrough).size(), 3U);
}

}  // namespace
}  // namespace qel::host
