// usage: qel_test_settings_changer CONFIG LOG SEED CHANGES CALL
//
// Applies random changes to a configuration, some of them wrong. Before each one it appends to the log, as one line,
// what the file is to hold then; the first line is what it holds at the start. At its CALL-th call of write, fsync or
// rename it kills itself, in the middle of the write; 0: never.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

#include <boost/json.hpp>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "document.hpp"
#include "runtime.hpp"
#include "store.hpp"

namespace {

int callsLeft = 0;

void CountCall() {
    if (callsLeft > 0 && --callsLeft == 0) (void)kill(getpid(), SIGKILL);
}

}  // namespace

// In place of those of the C library, also for the libraries that this program is linked with.
extern "C" {

[[gnu::visibility("default")]] ssize_t write(int descriptor, void const* bytes, size_t size) {
    if (callsLeft == 1) (void)syscall(SYS_write, descriptor, bytes, size / 2);
    CountCall();
    return syscall(SYS_write, descriptor, bytes, size);
}

[[gnu::visibility("default")]] int fsync(int descriptor) {
    CountCall();
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

[[gnu::visibility("default")]] int rename(char const* from, char const* to) noexcept {
    CountCall();
    return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

}  // extern "C"

namespace {

namespace json = boost::json;
using namespace qel::serve;

class Changes {
public:
    explicit Changes(unsigned int seed) : random_(seed) {}

    json::object MakePatch() {
        switch (Pick(6)) {
            case 0:
                return {{"algorithms", json::object{{"Threshold", json::object{{"confidence", Pick(1000) / 1000.0}}}}}};
            case 1:
                return InStreams(json::object{{"loop", Pick(2) == 0}, {"source", std::string(Pick(2000) + 1, 'x')}});
            case 2:
                return InStreams(nullptr);
            default:
                return InStreams(json::object{
                    {"source", "video.avi"},
                    {"algorithms", json::array{"threshold"}},
                    {"settings", json::object{{"Threshold", json::object{{"threshold", Pick(250) + 1}}}}}});
        }
    }

    json::object MakeWrongPatch() {
        return {{"algorithms", json::object{{"Threshold", json::object{{"threshold", 0}}}}}};
    }

    unsigned int Pick(unsigned int count) { return static_cast<unsigned int>(random_() % count); }

private:
    json::object InStreams(json::value stream) {
        return {{"streams", json::object{{std::string(1, static_cast<char>('a' + Pick(8))), std::move(stream)}}}};
    }

    std::mt19937 random_;
};

bool IsApplied(Store& store, json::object const& patch) {
    try {
        (void)store.Patch(patch);
        return true;
    } catch (Refused const&) {
        return false;
    }
}

int Run(char const* config, char const* logFile, unsigned int seed, int changes) {
    qel::host::Runtime runtime;
    Store store(runtime, config);
    if (auto const reason = store.GetSafeModeReason()) {
        std::cerr << *reason << '\n';
        return 2;
    }
    std::ofstream log(logFile);
    auto const tell = [&](json::object const& document) {
        log << json::serialize(json::string(FormatDocument(document))) << std::endl;
    };
    tell(store.GetDocument());
    Changes random(seed);
    for (int i = 0; i < changes;) {
        if (random.Pick(5) == 0 && IsApplied(store, random.MakeWrongPatch())) return 3;
        json::object const patch = random.MakePatch();
        json::object next = store.GetDocument();
        MergePatch(next, patch);
        // A stream that is not there cannot be changed in parts: the change is refused, and nothing may come of it.
        bool isWhole = true;
        for (auto const& stream : next.at("streams").as_object())
            isWhole &= stream.value().as_object().contains("algorithms");
        if (isWhole) tell(next);
        if (IsApplied(store, patch) != isWhole) return 4;
        if (isWhole) ++i;
    }
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 6) return 1;
    callsLeft = std::atoi(arguments[5]);
    try {
        return Run(arguments[1], arguments[2], static_cast<unsigned int>(std::atoi(arguments[3])),
                   std::atoi(arguments[4]));
    } catch (std::exception const& error) {
        std::cerr << error.what() << '\n';
        return 5;
    }
}
