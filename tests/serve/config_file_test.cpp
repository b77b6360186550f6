#include "config_file.hpp"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class ConfigFileTest : public testing::Test {
protected:
    test::TemporaryDirectory directory_;
    std::string const path_ = directory_ / "config.json";
    ConfigFile const file_{path_};
};

TEST_F(ConfigFileTest, ReadsWhatWasSaved) {
    EXPECT_EQ(file_.Read(), std::nullopt);
    EXPECT_EQ(file_.ReadLastGood(), std::nullopt);
    file_.Save("one");
    EXPECT_EQ(file_.Read(), "one");
    EXPECT_EQ(file_.ReadLastGood(), "one");
    test::WriteFile(path_, "two");
    EXPECT_EQ(file_.Read(), "two");
    EXPECT_EQ(file_.ReadLastGood(), "one");
    file_.SaveLastGood("three");
    EXPECT_EQ(file_.Read(), "two");
    EXPECT_EQ(file_.ReadLastGood(), "three");
}

TEST_F(ConfigFileTest, KeepsABrokenOne) {
    test::WriteFile(path_, "broken");
    file_.KeepBroken();
    test::WriteFile(path_, "more broken");
    file_.KeepBroken();
    EXPECT_EQ(test::ReadFile(path_ + ".broken"), "more broken");
    EXPECT_EQ(file_.Read(), "more broken");
    std::filesystem::remove(path_);
    EXPECT_NO_THROW(file_.KeepBroken()) << "somebody has taken it away";
    EXPECT_EQ(test::ReadFile(path_ + ".broken"), "more broken");
    std::filesystem::remove(path_ + ".broken");
    std::filesystem::create_directory(path_ + ".broken");
    test::WriteFile(path_, "broken");
    EXPECT_THAT(test::MessageOf<host::Error>([&] { file_.KeepBroken(); }),
                StartsWith("cannot keep '" + path_ + "' as '" + path_ + ".broken': "));
}

TEST_F(ConfigFileTest, IsAbsoluteWhateverThePath) {
    EXPECT_EQ(ConfigFile("a/../config.json").GetPath(),
              boost::filesystem::path((std::filesystem::current_path() / "config.json").string()));
    EXPECT_EQ(file_.GetLastGoodPath().string(), path_ + ".last-good");
}

TEST_F(ConfigFileTest, SavesThoughTheLastGoodOneCannotBeKept) {
    std::filesystem::create_directories(path_ + ".last-good/in the way");
    testing::internal::CaptureStderr();
    file_.Save("one");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("The last good configuration is not kept: cannot "));
    EXPECT_EQ(file_.Read(), "one");
    EXPECT_THROW(file_.SaveLastGood("one"), host::Error);
    EXPECT_EQ(file_.ReadLastGood(), std::nullopt);
}

}  // namespace
}  // namespace qel::serve
