// Files of models that are not as they should be: each fails alone, in bounded time and memory, with its reason.

#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "inference/following.hpp"
#include "support/unprivileged.hpp"

namespace qel::inference {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr char Metadata[] = R"({"max_batch_size": 2})";

class BrokenModels : public testing::Test {
protected:
    /// What is logged of the model "a" when it is loaded, without what stands before the file.
    std::string Failure() {
        backend::Manager const manager(folder.GetRoot().string());
        EXPECT_TRUE(manager.WaitUntilSettled(test::Patience));
        EXPECT_EQ(manager.GetModel("a"), nullptr);
        std::string const text = log.Take();
        std::string const start = "Model a failed: ";
        return text.starts_with(start) ? text.substr(start.size(), text.size() - start.size() - 1) : text;
    }
    std::string FailureWithMetadata(std::string_view metadata) {
        folder.Write("a", test::MeanClassifier{}, metadata);
        return WithoutPath(Failure(), "metadata.json");
    }
    std::string FailureWithModel(std::string_view bytes) {
        folder.Write("a", "metadata.json", Metadata);
        folder.Write("a", "model.onnx", bytes);
        return WithoutPath(Failure(), "model.onnx");
    }
    std::string WithoutPath(std::string const& failure, std::string_view file) const {
        std::string const path = folder.FileOf("a", file).string() + " ";
        return failure.starts_with(path) ? failure.substr(path.size()) : "does not name the file: " + failure;
    }

    LoggedText log;
    test::ModelFolder folder;
};

/// The most memory that the process has used so far, in MiB.
long PeakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST_F(BrokenModels, HaveMetadataThatCannotBeUsed) {
    EXPECT_EQ(FailureWithMetadata(""), "cannot be used: line 1, column 1: there is no JSON document");
    EXPECT_EQ(FailureWithMetadata("{}"),
              "cannot be used: JSON Parsing failed - provided NVP (max_batch_size) not found");
    EXPECT_EQ(FailureWithMetadata(R"({"max_batch_size": 0})"), "cannot be used: \"max_batch_size\" must be 1 or more");
    EXPECT_THAT(FailureWithMetadata(R"({"max_batch_size": "many"})"), HasSubstr("cannot be used: "));
    EXPECT_THAT(FailureWithMetadata(R"({"max_batch_size": 4294967296})"), HasSubstr("cannot be used: "));
    EXPECT_THAT(FailureWithMetadata(R"({"max_batch_size": 1)"), HasSubstr("cannot be used: line 1, column 21: "));
}

TEST_F(BrokenModels, HaveMetadataThatIsTooDeepOrTooLarge) {
    long const before = PeakMemory();
    EXPECT_THAT(FailureWithMetadata(std::string(1000000, '[')), HasSubstr("cannot be used: line 1, column 65: "));
    EXPECT_THAT(FailureWithMetadata(R"({"max_batch_size": 1, "more": )" + std::string(1000000, '[') +
                                    std::string(1000000, ']') + "}"),
                HasSubstr("cannot be used: line 1, column "));
    folder.Write("a", test::MeanClassifier{}, Metadata);
    fs::resize_file(folder.FileOf("a", "metadata.json"), std::uintmax_t{1} << 30U);
    EXPECT_EQ(WithoutPath(Failure(), "metadata.json"), "is larger than 16777216 bytes");
    EXPECT_LT(PeakMemory() - before, 256);
}

TEST_F(BrokenModels, HaveFilesThatAreNone) {
    for (char const* const file : {"metadata.json", "model.onnx"}) {
        folder.Write("a", test::MeanClassifier{}, Metadata);
        auto const path = folder.FileOf("a", file);
        fs::remove(path);
        fs::create_directory(path);
        EXPECT_EQ(WithoutPath(Failure(), file), "is no regular file") << file;
        fs::remove(path);
        ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
        EXPECT_EQ(WithoutPath(Failure(), file), "is no regular file") << "a pipe, which nobody waits for";
        fs::remove(path);
        folder.Write("a", "labels.txt", "");
        folder.Write("a", test::MeanClassifier{}, Metadata);
        EXPECT_EQ(Failure(), "The labels " + folder.FileOf("a", "labels.txt").string() + ": is empty");
        fs::remove(folder.FileOf("a", "labels.txt"));
    }
}

TEST_F(BrokenModels, HaveFilesWithoutPermission) {
    fs::permissions(folder.GetRoot(), fs::perms(0755));
    for (char const* const file : {"metadata.json", "model.onnx"}) {
        folder.Write("a", test::MeanClassifier{}, Metadata);
        fs::permissions(folder.FileOf("a", file), fs::perms::none);
        {
            test::Unprivileged const unprivileged;
            EXPECT_EQ(WithoutPath(Failure(), file), "cannot be opened: Permission denied");
        }
        fs::permissions(folder.FileOf("a", file), fs::perms(0644));
    }
}

TEST_F(BrokenModels, AreLoadedWhenThePermissionIsGiven) {
    folder.Write("a", test::MeanClassifier{}, Metadata);
    fs::permissions(folder.GetRoot(), fs::perms(0755));
    fs::permissions(folder.FileOf("a", "model.onnx"), fs::perms::none);
    std::optional<backend::Manager> manager;
    {
        test::Unprivileged const unprivileged;
        manager.emplace(folder.GetRoot().string());
        EXPECT_TRUE(manager->WaitUntilSettled(test::Patience));
        EXPECT_EQ(manager->GetModel("a"), nullptr);
    }
    fs::permissions(folder.FileOf("a", "model.onnx"), fs::perms(0644));
    EXPECT_TRUE(manager->WaitUntilSettled(test::Patience));
    EXPECT_NE(manager->GetModel("a"), nullptr);
}

TEST_F(BrokenModels, HaveAModelFileThatIsNone) {
    EXPECT_EQ(FailureWithModel(""), "is empty");
    EXPECT_EQ(FailureWithModel("\x7f"
                               "ELF"),
              "is no ONNX model, or only a part of one");
    std::string const good = test::MakeOnnx({});
    EXPECT_EQ(FailureWithModel(good.substr(0, good.size() / 2)), "is no ONNX model, or only a part of one");
    EXPECT_EQ(FailureWithModel(test::MakeOnnx({.extraInputs = 2})), "has 3 inputs; a network must have one");
}

TEST_F(BrokenModels, HaveAModelFileThatIsTooLarge) {
    folder.Write("a", test::MeanClassifier{}, Metadata);
    fs::resize_file(folder.FileOf("a", "model.onnx"), std::uintmax_t{1} << 40U);
    EXPECT_EQ(WithoutPath(Failure(), "model.onnx"), "is larger than 536870912 bytes");
}

TEST_F(BrokenModels, FailWithWhatTheBackEndSays) {
    EXPECT_THAT(FailureWithModel(test::MakeOnnx({.flattenAxis = 9})), HasSubstr("OpenCV refuses it: "));
}

TEST_F(BrokenModels, FailWhereTheBackEndWouldCrash) {
    // OpenCV divides by the number of classes.
    EXPECT_THAT(FailureWithModel(test::MakeOnnx({.weights = {}})), testing::StartsWith("makes the back end crash"));
}

TEST_F(BrokenModels, NeverHarmTheProcessHoweverTheirBytesAreChanged) {
    // Many models at once: each is loaded, or fails with a reason, and the last, a good one, is loaded after all.
    std::mt19937 random(20);
    std::string const good = test::MakeOnnx({});
    char const* const wanted = std::getenv("QEL_TEST_MUTATIONS");  // more of them, by hand
    int const count = wanted == nullptr ? 300 : std::atoi(wanted);
    std::set<std::string> names;
    for (int i = 0; i < count; ++i) {
        std::string bytes = good;
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            std::size_t const at = random() % bytes.size();
            switch (random() % 4) {
                case 0:
                    bytes.erase(at, 1 + random() % 4);
                    break;
                case 1:
                    bytes[at] = static_cast<char>(bytes[at] ^ (1 << random() % 8));
                    break;
                default:
                    bytes[at] = static_cast<char>(random());
            }
        }
        std::string name("m");
        name += std::to_string(i);
        folder.Write(name, "metadata.json", Metadata);
        folder.Write(name, "model.onnx", bytes);
        names.insert(name);
    }
    folder.Write("z", test::MeanClassifier{}, R"({"max_batch_size": 1, "backend_loading_priority": -1})");
    backend::Manager const manager(folder.GetRoot().string());
    ASSERT_TRUE(manager.WaitUntilSettled(std::chrono::seconds(count)));
    EXPECT_NE(manager.GetModel("z"), nullptr);
    std::string const text = log.Take();
    for (std::string const& name : names) {
        auto const model = manager.GetModel(name);
        EXPECT_EQ(model == nullptr, text.find("Model " + name + " failed: ") != std::string::npos) << name;
        if (model == nullptr) continue;
        try {
            (void)model->Run(Tensor{{1, 3, 8, 8}, std::vector<float>(192, 1)});
        } catch (std::exception const&) {
            // Of another input size by now.
        }
    }
}

}  // namespace
}  // namespace qel::inference
