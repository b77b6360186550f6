#include <filesystem>
#include <set>

#include <gmock/gmock.h>

#include "error.hpp"
#include "store_fixture.hpp"
#include "support/file_size_limit.hpp"
#include "support/message_of.hpp"
#include "support/unprivileged.hpp"

namespace qel::serve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class StoreFile : public StoreTest {
protected:
    std::string ReadBeside(char const* ending) const { return test::ReadFile(path_ + ending); }

    std::string const broken_ = "{\n  \"streams\": {,}\n}";
};

TEST_F(StoreFile, KeepsWhatWasInEffectLast) {
    OpenWith(Gate);
    EXPECT_EQ(ReadBeside(".last-good"), Gate);
    Patch(R"({"algorithms": {"Threshold": {"threshold": 30}}})");
    EXPECT_EQ(ReadBeside(".last-good"), test::ReadFile(path_));
    EXPECT_THAT(ReadBeside(".last-good"), HasSubstr("30"));
}

TEST_F(StoreFile, FallsBackToTheLastGoodOneAndSaysWhere) {
    OpenWith(Gate);
    Patch(R"({"algorithms": {"Threshold": {"threshold": 30}}})");
    auto const document = store_->GetDocument();
    OpenWith(broken_);
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"),
                StartsWith("'" + path_ + "' is not used: line 2, column 15: "));
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"), HasSubstr("The last good configuration is in effect"));
    EXPECT_EQ(store_->GetDocument(), document);
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "30");
    EXPECT_EQ(test::ReadFile(path_), broken_) << "not replaced until there is a change";
    EXPECT_FALSE(std::filesystem::exists(path_ + ".broken"));
}

TEST_F(StoreFile, LeavesSafeModeWithTheNextChangeAndKeepsTheBrokenFile) {
    OpenWith(Gate);
    OpenWith(broken_);
    RefusalOf(R"({"algorithms": {"Threshold": {"threshold": 0}}})");
    EXPECT_TRUE(store_->GetSafeModeReason());
    Patch(R"({"algorithms": {"Threshold": {"threshold": 31}}})");
    EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt);
    EXPECT_EQ(ReadBeside(".broken"), broken_);
    EXPECT_THAT(test::ReadFile(path_), HasSubstr("31"));
    Open();
    EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt);
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "31");
    EXPECT_EQ(ReadBeside(".broken"), broken_);
}

TEST_F(StoreFile, LeavesSafeModeWithAChangeThatChangesNothing) {
    OpenWith(Gate);
    OpenWith(broken_);
    EXPECT_THAT(Patch("{}"), IsEmpty());
    EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt);
    EXPECT_EQ(ReadBeside(".broken"), broken_);
    Open();
    EXPECT_EQ(store_->GetStreams().size(), 1U);
}

TEST_F(StoreFile, StartsEmptyWhereThereIsNoGoodOne) {
    OpenWith("");
    EXPECT_EQ(store_->GetSafeModeReason(),
              "'" + path_ +
                  "' is not used: line 1, column 1: there is no JSON document. Nothing is set, as the last "
                  "good configuration cannot be used either: there is none");
    EXPECT_EQ(Data("streams"), "{}");
    test::WriteFile(path_ + ".last-good", "[]");
    Open();
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"),
                HasSubstr("cannot be used either: line 1, column 1: expected an object, found a list"));
}

TEST_F(StoreFile, TellsWhatAFileSaysThatCannotBe) {
    OpenWith(R"({"streams": {"gate": {"source": "a", "algorithms": ["threshold"], "loop": 1,
                                      "settings": {"Threshold": {"threshold": 300}}}}})");
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"),
                StartsWith("'" + path_ +
                           "' is not used: streams.gate.loop: expected true or false, found the number "
                           "1; streams.gate.settings.Threshold.threshold: the value 300 is out of the "
                           "range 1 to 250. "));
    OpenWith(R"({"a": 1, "b": 1, "c": 1, "d": 1, "e": 1, "f": 1, "g": 1})");
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"), HasSubstr("; and 2 more. "));
}

TEST_F(StoreFile, RefusesOneThatIsTooLargeOrTooDeep) {
    OpenWith("{}" + std::string(8 << 20, ' '));
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"), HasSubstr("is larger than 8388608 bytes"));
    OpenWith(R"({"a": )" + std::string(16, '[') + std::string(16, ']') + "}");
    EXPECT_THAT(store_->GetSafeModeReason().value_or("none"), HasSubstr("nested more than 16 deep"));
}

TEST_F(StoreFile, KeepsAlgorithmsThatNobodyKnows) {
    char const* const gone =
        R"({"streams": {"gate": {"source": "g", "algorithms": ["gone", "invert"], "settings": {"Gone": {"x": 1}}}},
            "algorithms": {"Gone": {"y": 2}}})";
    OpenWith(gone);
    EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt);
    auto const problems = store_->GetProblems();
    ASSERT_EQ(problems.size(), 3U);
    EXPECT_EQ(problems[0].path, "algorithms.Gone");
    EXPECT_EQ(problems[1].path, "streams.gate.algorithms[0]");
    EXPECT_THAT(problems[1].reason, StartsWith("there is no algorithm 'gone'; did you mean "));
    EXPECT_EQ(problems[2].path, "streams.gate.settings.Gone");
    EXPECT_THAT(store_->GetStreams().front().algorithms, ElementsAre("gone", "invert"));
    EXPECT_EQ(store_->GetStreams().front().settings.size(), 1U);
    EXPECT_EQ(store_->GetDocument(), Parse(gone));

    // Other changes go on; what is not known cannot be changed, but taken back.
    Patch(R"({"streams": {"gate": {"loop": true}}})");
    EXPECT_EQ(store_->GetProblems(), problems);
    EXPECT_THAT(RefusalOf(R"({"algorithms": {"Gone": {"y": 3}}})"), ElementsAre(StartsWith("algorithms.Gone: ")));
    EXPECT_THAT(RefusalOf(R"({"streams": {"gate": {"algorithms": ["gone", "gone"]}}})"),
                ElementsAre("streams.gate.algorithms[1]: the algorithm 'gone' is named twice"));
    EXPECT_THAT(RefusalOf(R"({"streams": {"door": {"source": "d", "algorithms": ["gone"]}}})"),
                ElementsAre(StartsWith("streams.door.algorithms[0]: there is no algorithm 'gone'")));
    Patch(R"({"algorithms": {"Gone": null}, "streams": {"gate": {"algorithms": ["invert"], "settings": null}}})");
    EXPECT_THAT(store_->GetProblems(), IsEmpty());
}

TEST_F(StoreFile, ChangesNothingWhenItCannotBeWritten) {
    OpenWith(Gate);
    auto const document = store_->GetDocument();
    auto const data = store_->GetData("");
    int told = 0;
    auto const binding = store_->BindChanges([&](auto const&) { ++told; });
    // Everybody may read there, and nobody but the owner of the folder write.
    std::filesystem::permissions(directory_.GetPath(), std::filesystem::perms(0555));
    {
        test::Unprivileged const user;
        EXPECT_THAT(test::MessageOf<host::Error>([&] { Patch(R"({"algorithms": {"Threshold": {"threshold": 30}}})"); }),
                    StartsWith("cannot write '" + path_ + "': "));
        EXPECT_EQ(store_->GetData(""), data);
        EXPECT_THAT(test::MessageOf<host::Error>([&] { Open(); }),
                    StartsWith("cannot use '" + path_ + "': cannot open '" + path_ + ".lock': "));
    }
    std::filesystem::permissions(directory_.GetPath(), std::filesystem::perms::owner_all);
    EXPECT_EQ(told, 0);
    Open();
    EXPECT_EQ(store_->GetDocument(), document);
    EXPECT_EQ(store_->GetData(""), data);
}

TEST_F(StoreFile, IsUsedByOneStoreAtATimeWhateverItsName) {
    OpenWith(Gate);
    std::filesystem::create_directory(directory_ / "other");
    std::filesystem::create_symlink(path_, directory_ / "other/link.json");
    for (std::string const& path : {path_, directory_ / "other/link.json"}) {
        host::Runtime runtime;
        EXPECT_EQ(
            test::MessageOf<host::Error>([&] { Store const store(runtime, path); }),
            "another program uses the configuration '" + path + "': end it first, or give each a file of its own");
        // The file is another one after each change, the lock is not.
        Patch(R"({"algorithms": {"Threshold": {"threshold": 30}}})");
    }
    Open();
    EXPECT_EQ(Data("streams.gate.settings.Threshold.threshold"), "30");
}

TEST_F(StoreFile, ChangesNothingAndLeavesNothingBehindWhenTheDiskIsFull) {
    OpenWith(Gate);
    auto const document = store_->GetDocument();
    {
        test::FileSizeLimit const full(20);
        EXPECT_THAT(test::MessageOf<host::Error>([&] { Patch(R"({"algorithms": {"Threshold": {"threshold": 30}}})"); }),
                    StartsWith("cannot write '" + path_ + "': "));
    }
    EXPECT_EQ(store_->GetDocument(), document);
    EXPECT_EQ(test::ReadFile(path_), Gate);
    std::set<std::string> files;
    for (auto const& entry : std::filesystem::directory_iterator(directory_.GetPath())) {
        files.insert(entry.path().filename().string());
    }
    EXPECT_THAT(files, ElementsAre("config.json", "config.json.last-good", "config.json.lock"));
    {
        test::FileSizeLimit const full(20);
        Open();
        EXPECT_EQ(store_->GetSafeModeReason(), std::nullopt) << "it starts all the same";
    }
    Patch(R"({"algorithms": {"Threshold": {"threshold": 30}}})");
    EXPECT_THAT(test::ReadFile(path_), HasSubstr("30"));
}

TEST_F(StoreFile, TellsOfOneThatCannotBeRead) {
    std::filesystem::create_directory(path_);
    EXPECT_THAT(test::MessageOf<host::Error>([&] { Open(); }), StartsWith("cannot read '" + path_ + "': "));
    host::Runtime runtime;
    EXPECT_THAT(test::MessageOf<host::Error>([&] { Store const store(runtime, directory_ / "no/such/folder.json"); }),
                StartsWith("cannot use '" + (directory_ / "no/such/folder.json") + "': "));
    EXPECT_EQ(runtime.GetRoot().Find("streams"), nullptr);
}

}  // namespace
}  // namespace qel::serve
