// The reader in processes that may take a limited amount of memory. Sanitizers take more than any limit for themselves.
#include <cstdio>
#include <new>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "qel/serialize/json_input.hpp"

namespace qel::serialize {
namespace {

/// The bytes of address space that the process has taken.
std::size_t GetTaken() {
    std::size_t pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%zu", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

enum Outcome { Read = 10, NoMemory = 11, Other = 12 };

/// What becomes of a text in a process that may take so many bytes more; minus the signal that ended the process.
int ReadWithin(std::string const& text, std::size_t bytes) {
    pid_t const child = fork();
    if (child == 0) {
        std::size_t const limit = GetTaken() + bytes;
        rlimit const limits{limit, limit};
        if (setrlimit(RLIMIT_AS, &limits) != 0) _exit(Other);
        try {
            JsonInput const input(text);
            _exit(Read);
        } catch (std::bad_alloc const&) {
            _exit(NoMemory);
        } catch (...) {
            _exit(Other);
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(MemoryGuard, StandsBeforeTheReaderWhateverIsMissing) {
    std::string numbers = "[0", members = "{\"a\": 0", nested = "[0";
    for (int i = 0; i < 100000; ++i) {
        numbers += ",1";
        members += ",\"b\": \"a text that is not kept in place\"";
        nested += i % 2 ? ",[{\"a\": [1, 2]}]" : ",{\"a\": [{}]}";
    }
    std::string const words = "[\"" + std::string(3000000, 'x') + "\"]";
    for (std::string const& text : {numbers + "]", members + "}", nested + "]", words}) {
        SCOPED_TRACE(text.substr(0, 40));
        int last = 0, starts = 0;
        // From too little to enough, in steps that hit the reader wherever it takes memory.
        for (std::size_t bytes = 0; last != Read; bytes += 400000) {
            int const outcome = ReadWithin(text, bytes);
            ASSERT_TRUE(outcome == Read || outcome == NoMemory) << outcome << " with " << bytes << " bytes";
            starts += outcome == NoMemory ? 1 : 0;
            last = outcome;
            ASSERT_LT(bytes, std::size_t{1} << 30U);
        }
        EXPECT_GT(starts, 2);
    }
}

}  // namespace
}  // namespace qel::serialize
