#include "mqtt/password.hpp"

#include <cstdlib>

#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using qel::test::MessageOf;
using qel::test::TemporaryDirectory;
using qel::test::WriteFile;

TEST(Password, IsTheFirstLineOfTheFileOrElseOfTheEnvironment) {
    TemporaryDirectory const folder;
    unsetenv("QEL_MQTT_PASSWORD");
    EXPECT_EQ(ReadPassword(""), "");
    setenv("QEL_MQTT_PASSWORD", "from outside", 1);
    EXPECT_EQ(ReadPassword(""), "from outside");
    for (char const* text : {"open sesame", "open sesame\n", "open sesame\r\nmore\n"}) {
        WriteFile(folder / "password", text);
        std::filesystem::permissions(folder / "password", std::filesystem::perms::owner_read);
        EXPECT_EQ(ReadPassword(folder / "password"), "open sesame");
        std::filesystem::remove(folder / "password");
    }
    unsetenv("QEL_MQTT_PASSWORD");
}

TEST(Password, IsRefusedWhereOthersCouldReadItOrThereIsNone) {
    TemporaryDirectory const folder;
    std::string const path = folder / "password";
    auto const say = [&] { return MessageOf<host::UsageError>([&] { ReadPassword(path); }); };
    std::string const begin = "the password file '" + path + "' ";
    EXPECT_EQ(say(), begin + "cannot be read: No such file or directory");
    WriteFile(path, "secret");
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    EXPECT_EQ(say(), begin + "can be read or changed by other users: chmod 600 it");
    std::filesystem::permissions(path, std::filesystem::perms(0600));
    EXPECT_EQ(ReadPassword(path), "secret");
    WriteFile(path, "\nsecret");
    EXPECT_EQ(say(), begin + "holds no password in its first line");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(say(), begin + "is no file");
}

}  // namespace
}  // namespace qel::serve::mqtt
