// What becomes of a descriptor whose model has a metadata file that is not as it should be.

#include <cereal/cereal.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "info/publishing.hpp"
#include "qel/algorithm/info/state_classifier.hpp"

namespace qel::algorithm {
namespace {

namespace fs = boost::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class MetadataFile : public testing::Test {
protected:
    void Publish() {
        InfoBuilder::Register(manager, std::make_shared<info::StateClassifier>(*root, "door", "", Strings{"a", "b"}));
    }
    std::string VersionWith(std::string const& json) {
        models.WriteMetadata("a", json);
        root = Map::Make("root");
        Publish();
        return configuration::json::Data(*root->Find("algorithms.info.door.version"));
    }
    /// The error that reading ends in; checks what stays behind.
    std::string Error() {
        std::string text = "nothing was thrown";
        try {
            Publish();
        } catch (cereal::Exception const& error) {
            text = error.what();
        }
        ExpectHalfDone();
        return text;
    }
    std::string ErrorWith(std::string const& json) {
        models.WriteMetadata("a", json);
        return Error();
    }
    /// The callbacks of both models are registered and harmless, and the map is not inserted.
    void ExpectHalfDone() {
        ASSERT_EQ(manager.callbacks.size(), 2U);
        for (auto const& [name, callback] : manager.callbacks) callback(Loaded);
        manager.callbacks.clear();
        EXPECT_EQ(DataOf(*root, "algorithms.info"), "{}");
        root = Map::Make("root");
    }

    std::shared_ptr<Map> root = Map::Make("root");
    RecordingManager manager;
    ModelRoot models;
    LoggedLines log;
};

TEST_F(MetadataFile, GivesTheVersionUnknownWithoutATextForIt) {
    EXPECT_EQ(VersionWith(R"({"max_batch_size": 1, "version": "2"})"), R"({"version": "2"})");
    EXPECT_EQ(VersionWith(R"({"max_batch_size": 1})"), R"({"version": "unknown"})");
    EXPECT_EQ(VersionWith(R"({"max_batch_size": 1, "version": 2})"), R"({"version": "unknown"})");
    EXPECT_EQ(VersionWith(R"({"max_batch_size": 1, "version": ""})"), R"({"version": ""})");
    EXPECT_EQ(VersionWith(R"({"max_batch_size": 1, "backend_loading_priority": "high", "version": "3"})"),
              R"({"version": "3"})");
}

TEST_F(MetadataFile, MustHaveABatchSize) {
    EXPECT_THAT(ErrorWith("{}"), StartsWith("JSON Parsing failed - provided NVP"));
    EXPECT_THAT(ErrorWith(R"({"version": "2"})"), StartsWith("JSON Parsing failed - provided NVP"));
    EXPECT_THAT(ErrorWith("[]"), StartsWith("JSON Parsing failed - provided NVP"));
    EXPECT_NE(ErrorWith(R"({"max_batch_size": -1})"), "nothing was thrown");
    EXPECT_NE(ErrorWith(R"({"max_batch_size": 4294967296})"), "nothing was thrown");
    EXPECT_NE(ErrorWith(R"({"max_batch_size": "1"})"), "nothing was thrown");
}

TEST_F(MetadataFile, MustBeJson) {
    std::string const path = models.GetMetadataPath("a").string();
    EXPECT_THAT(ErrorWith(""), StartsWith(path + ": line 1, column 1: "));
    EXPECT_THAT(ErrorWith("{\n  \"max_batch_size\": 1,\n}"), StartsWith(path + ": line 3, column 1: "));
    EXPECT_THAT(ErrorWith("{\"max_batch_size\": 1} x"), StartsWith(path + ": line 1, column 23: "));
    EXPECT_THAT(ErrorWith("{\"max_batch_size\": 1"), StartsWith(path + ": line 1, "));
    EXPECT_THAT(ErrorWith("5"), StartsWith(path + ": line 1, column 1: "));
    EXPECT_THAT(ErrorWith("{\"max_batch_size\": 1, \"version\": \"\xff\"}"), StartsWith(path + ": line 1, "));
}

TEST_F(MetadataFile, MayNotBeNestedDeeply) {
    EXPECT_THAT(ErrorWith(std::string(1000000, '[')),
                AllOf(StartsWith(models.GetMetadataPath("a").string() + ": line 1, "), HasSubstr("deep")));
    std::string deep = "{\"max_batch_size\": 1, \"x\": ";
    for (int i = 0; i < 1000000; ++i) deep += "{\"x\": ";
    EXPECT_THAT(ErrorWith(deep), HasSubstr("deep"));
}

TEST_F(MetadataFile, MayNotBeHuge) {
    auto const path = models.GetMetadataPath("a");
    models.WriteMetadata("a", "{");
    fs::resize_file(path, std::uintmax_t{1} << 30U);
    EXPECT_THAT(Error(), AllOf(StartsWith(path.string() + ": "), HasSubstr("larger than")));
    fs::remove(path);
    fs::create_symlink("/dev/zero", path);
    EXPECT_THAT(Error(), HasSubstr("larger than"));
}

TEST_F(MetadataFile, IsReadWhateverItIsAndFailsThen) {
    auto const path = models.GetMetadataPath("a");
    fs::create_directory(path);
    EXPECT_THAT(Error(), StartsWith(path.string() + ": "));
    fs::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_THAT(Error(), StartsWith(path.string() + ": "));
}

TEST_F(MetadataFile, MustBeReadable) {
    models.WriteMetadata("a", R"({"max_batch_size": 1})");
    auto const path = models.GetMetadataPath("a");
    fs::permissions(models.GetPath(), fs::add_perms | fs::others_read | fs::others_exe);
    fs::permissions(path, fs::no_perms);
    // No permission stops the super-user.
    uid_t const former = geteuid();
    ASSERT_EQ(seteuid(former == 0 ? 65534 : former), 0);
    std::string const error = Error();
    ASSERT_EQ(seteuid(former), 0);
    EXPECT_THAT(error, StartsWith(path.string() + ": "));
}

TEST_F(MetadataFile, CountsAsMissingBehindAFileOrADanglingLink) {
    auto const path = models.GetMetadataPath("a");
    fs::create_symlink("gone.json", path);
    EXPECT_NO_THROW(Publish());
    EXPECT_EQ(log.lines.size(), 2U);
    fs::remove_all(path.parent_path());
    std::ofstream(path.parent_path().string()) << "a file";
    root = Map::Make("root");
    EXPECT_NO_THROW(Publish());
    EXPECT_EQ(log.lines.size(), 4U);
}

TEST_F(MetadataFile, PassesOnWhatTheFileSystemReports) {
    auto const path = models.GetMetadataPath("a");
    fs::create_symlink("metadata.json", path);  // a link to itself
    EXPECT_THROW(Publish(), fs::filesystem_error);
    ExpectHalfDone();
}

}  // namespace
}  // namespace qel::algorithm
