#include "model_watch.hpp"

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include "support/temporary_directory.hpp"

namespace qel::inference {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class ModelWatchTest : public testing::Test {
protected:
    ModelWatchTest() {
        fs::create_directories(root / "a" / "onnx");
        EXPECT_TRUE(watch.WatchRoot());
        EXPECT_TRUE(watch.Watch("a"));
    }

    std::set<std::string> Names() {
        auto const changes = watch.Read();
        EXPECT_FALSE(changes.rootLost);
        EXPECT_FALSE(changes.any);
        return changes.names;
    }
    bool IsReadable() const {
        pollfd watched{watch.GetDescriptor(), POLLIN, 0};
        return poll(&watched, 1, 0) == 1;
    }

    test::TemporaryDirectory folder;
    fs::path root = fs::path(folder.GetPath()) / "models";
    fs::path elsewhere = fs::path(folder.GetPath()) / "elsewhere";
    ModelWatch watch{root.string()};
};

TEST_F(ModelWatchTest, TellsOnceOfAModelWhoseFilesChange) {
    EXPECT_FALSE(IsReadable());
    EXPECT_THAT(Names(), IsEmpty());
    test::WriteFile((root / "a" / "onnx" / "model.onnx").string(), "x");
    test::WriteFile((root / "a" / "onnx" / "labels.txt").string(), "x");
    EXPECT_TRUE(IsReadable());
    EXPECT_THAT(Names(), ElementsAre("a"));
    EXPECT_THAT(Names(), IsEmpty());
    for (auto const permissions : {fs::perms::none, fs::perms(0600)}) {
        fs::permissions(root / "a" / "onnx" / "model.onnx", permissions);
        EXPECT_THAT(Names(), ElementsAre("a"));
    }
    fs::remove(root / "a" / "onnx" / "model.onnx");
    EXPECT_THAT(Names(), ElementsAre("a"));
}

TEST_F(ModelWatchTest, TellsOfAFileWhenItsWriterHasClosedIt) {
    std::ofstream file(root / "a" / "onnx" / "model.onnx");
    file << "half" << std::flush;
    EXPECT_THAT(Names(), IsEmpty());
    file << " and half";
    file.close();
    EXPECT_THAT(Names(), ElementsAre("a"));
}

TEST_F(ModelWatchTest, TellsOfFoldersThatComeToTheRootAndGo) {
    fs::create_directory(root / "b");
    fs::create_directories(elsewhere);
    fs::rename(elsewhere, root / "c");
    EXPECT_THAT(Names(), ElementsAre("b", "c"));
    fs::remove(root / "b");
    fs::rename(root / "c", elsewhere);
    EXPECT_THAT(Names(), ElementsAre("b", "c"));
}

TEST_F(ModelWatchTest, WatchesTheFoldersOfAModelAsTheyAre) {
    fs::rename(root / "a" / "onnx", root / "a" / "other");
    EXPECT_THAT(Names(), ElementsAre("a"));
    EXPECT_TRUE(watch.Watch("a"));
    test::WriteFile((root / "a" / "other" / "x").string(), "x");
    EXPECT_THAT(Names(), IsEmpty()) << "no folder of a model any more";
    fs::create_directory(root / "a" / "onnx");
    EXPECT_THAT(Names(), ElementsAre("a"));
    EXPECT_TRUE(watch.Watch("a"));
    test::WriteFile((root / "a" / "onnx" / "x").string(), "x");
    EXPECT_THAT(Names(), ElementsAre("a"));
    EXPECT_TRUE(watch.Watch("b")) << "nothing is there, and nothing to be watched";
}

TEST_F(ModelWatchTest, TellsOfEveryModelThatLinksLeadFromToOneFolder) {
    fs::create_directories(elsewhere / "onnx");
    for (char const* const name : {"b", "c"}) {
        fs::create_directory_symlink(elsewhere, root / name);
        EXPECT_TRUE(watch.Watch(name));
    }
    EXPECT_THAT(Names(), ElementsAre("b", "c"));
    test::WriteFile((elsewhere / "onnx" / "x").string(), "x");
    EXPECT_THAT(Names(), ElementsAre("b", "c"));
    fs::remove(root / "b");
    EXPECT_TRUE(watch.Watch("b"));
    EXPECT_THAT(Names(), ElementsAre("b"));
    test::WriteFile((elsewhere / "onnx" / "y").string(), "y");
    EXPECT_THAT(Names(), ElementsAre("c"));
}

TEST_F(ModelWatchTest, KeepsTheRootAlsoWhereALinkLedBackToIt) {
    fs::create_directory_symlink(root, root / "loop");
    EXPECT_TRUE(watch.Watch("loop"));
    EXPECT_THAT(Names(), ElementsAre("loop"));
    fs::remove(root / "loop");
    EXPECT_TRUE(watch.Watch("loop"));
    EXPECT_THAT(Names(), ElementsAre("loop"));
    fs::create_directory(root / "b");
    EXPECT_THAT(Names(), ElementsAre("b"));
    fs::rename(root, elsewhere);
    EXPECT_TRUE(watch.Read().rootLost);
}

TEST_F(ModelWatchTest, TellsThatTheRootHasGoneAlsoWhileALinkLeadsBackToIt) {
    fs::create_directory_symlink(root, root / "loop");
    EXPECT_TRUE(watch.Watch("loop"));
    fs::rename(root, elsewhere);
    EXPECT_TRUE(watch.Read().rootLost);
}

TEST_F(ModelWatchTest, TellsOnceThatTheRootHasGoneAndWatchesOneThatIsBack) {
    fs::rename(root, elsewhere);
    EXPECT_TRUE(watch.Read().rootLost);
    EXPECT_FALSE(watch.Read().rootLost);
    EXPECT_FALSE(watch.WatchRoot());
    fs::create_directory(elsewhere / "b");
    EXPECT_THAT(Names(), Not(Contains("b"))) << "no longer watched";
    fs::rename(elsewhere, root);
    EXPECT_TRUE(watch.WatchRoot());
    fs::create_directory(root / "c");
    EXPECT_THAT(Names(), Contains("c"));
    fs::remove_all(root);
    EXPECT_TRUE(watch.Read().rootLost);
}

TEST(ModelWatch, DoesNotWatchARootThatIsNoFolder) {
    test::TemporaryDirectory const folder;
    std::string const file = folder / "file";
    test::WriteFile(file, "x");
    EXPECT_FALSE(ModelWatch(file).WatchRoot());
    EXPECT_FALSE(ModelWatch(folder / "none").WatchRoot());
}

}  // namespace
}  // namespace qel::inference
