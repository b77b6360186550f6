#include "whole_file.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/temporary_directory.hpp"

namespace qel::host {
namespace {

/// A process that replaces a file again and again, now with the one content and now with the other, until it is killed.
class Replacer {
public:
    Replacer(std::string const& path, std::array<std::string, 2> const& contents) {
        std::array<int, 2> ready{};
        if (pipe(ready.data()) != 0) throw std::runtime_error("pipe");
        process_ = fork();
        if (process_ == 0) {
            ReplaceFile(path, contents[0]);
            if (write(ready[1], "x", 1) != 1) _exit(1);
            for (std::size_t i = 1;; ++i) ReplaceFile(path, contents[i % 2]);
        }
        char byte = 0;
        while (read(ready[0], &byte, 1) < 0 && errno == EINTR) continue;
        close(ready[0]);
        close(ready[1]);
    }
    Replacer(Replacer const&) = delete;
    Replacer& operator=(Replacer const&) = delete;
    ~Replacer() {
        kill(process_, SIGKILL);
        while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) continue;
    }

private:
    pid_t process_ = -1;
};

std::set<std::string> ListFiles(test::TemporaryDirectory const& directory) {
    std::set<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(directory.GetPath())) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

TEST(RemoveUnfinished, RemovesWhatWasLeftOfTheFileAndNothingElse) {
    test::TemporaryDirectory const directory;
    for (char const* const name : {"file", "file.unfinished-aB3xYz", "file.unfinished-", "file.unfinished-aB3xYzz",
                                   "file.backup", "other.unfinished-aB3xYz"}) {
        test::WriteFile(directory / name, "");
    }
    RemoveUnfinished(directory / "file");
    EXPECT_EQ(ListFiles(directory), (std::set<std::string>{"file", "file.backup", "file.unfinished-",
                                                           "file.unfinished-aB3xYzz", "other.unfinished-aB3xYz"}));
    EXPECT_NO_THROW(RemoveUnfinished(directory / "no/such/file"));
}

TEST(ReplaceFile, LeavesTheOldContentOrTheNewOneWheneverItIsKilled) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "file";
    std::array<std::string, 2> const contents{std::string(300000, 'a'), std::string(200000, 'b')};
    for (int moment = 0; moment < 100; ++moment) {
        {
            Replacer const replacer(path, contents);
            std::this_thread::sleep_for(std::chrono::microseconds(53 * moment));
        }
        std::string const content = test::ReadFile(path);
        ASSERT_TRUE(content == contents[0] || content == contents[1]) << "killed at moment " << moment;
    }
    EXPECT_GT(ListFiles(directory).size(), 1U) << "now and then it was killed in the middle";
    RemoveUnfinished(path);
    EXPECT_EQ(ListFiles(directory), std::set<std::string>{"file"});
}

}  // namespace
}  // namespace qel::host
