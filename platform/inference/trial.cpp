#include "trial.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

#include "back_end_library.hpp"
#include "load_back_end.hpp"
#include "trial_protocol.hpp"

namespace qel::inference {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds Limit(120);
constexpr std::size_t MaximumVerdict = 4096;

/// A copy of a descriptor that is out of the way of those which the new process is given.
system::Descriptor MoveUp(int descriptor) {
    system::Descriptor copy(fcntl(descriptor, F_DUPFD_CLOEXEC, trial::VerdictDescriptor + 1));
    if (!copy) throw std::runtime_error(std::string("cannot be tried out: ") + std::strerror(errno));
    return copy;
}

/// How posix_spawn sets the new process up: the model at descriptor 0, the verdict at 3, the rest is silent.
class SpawnSettings {
public:
    SpawnSettings(int model, int verdict) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, model, trial::ModelDescriptor);
        posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, 2, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, verdict, trial::VerdictDescriptor);
        posix_spawnattr_init(&attributes_);
        // The thread that asks has all signals blocked; the new process shall be as one started by hand.
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }

    pid_t Spawn(std::vector<std::string> arguments) const {
        std::vector<char*> list;
        for (std::string& argument : arguments) list.push_back(argument.data());
        list.push_back(nullptr);
        pid_t process = -1;
        int const error = posix_spawn(&process, list[0], &actions_, &attributes_, list.data(), environ);
        if (error != 0) throw std::runtime_error("cannot be tried out: " + arguments[0] + ": " + std::strerror(error));
        return process;
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

/// A process that ends when the object does.
class Process {
public:
    explicit Process(pid_t id) : id_(id) {}
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;
    ~Process() {
        if (id_ < 0) return;
        kill(id_, SIGKILL);
        (void)Wait();
    }

    /// The signal that ended the process; 0 for none, or where somebody else has waited for it.
    int Wait() {
        int status = 0;
        pid_t result = 0;
        do {
            result = waitpid(id_, &status, 0);
        } while (result < 0 && errno == EINTR);
        id_ = -1;
        return result > 0 && WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

private:
    pid_t id_;
};

/// verdict: closed on return, so that the new process alone holds the pipe's end.
pid_t Start(MemoryFile const& model, system::Descriptor verdict, std::vector<std::string> arguments) {
    system::Descriptor const modelAbove = MoveUp(model.GetDescriptor()), verdictAbove = MoveUp(verdict.Get());
    return SpawnSettings(modelAbove.Get(), verdictAbove.Get()).Spawn(std::move(arguments));
}

/// What the process writes until it ends.
std::string ReadVerdict(int verdict, int cancel) {
    std::string text;
    auto const end = Clock::now() + Limit;
    while (true) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) throw std::runtime_error("takes longer than two minutes to be tried out");
        std::array<pollfd, 2> waiting{{{verdict, POLLIN, 0}, {cancel, POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), static_cast<int>(left)) <= 0) continue;
        if (waiting[1].revents != 0) throw std::runtime_error("is no longer asked for");
        std::array<char, 512> block;
        ssize_t const count = read(verdict, block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > MaximumVerdict) return text.substr(0, MaximumVerdict);
    }
}

}  // namespace

void TryModel(MemoryFile const& model, std::vector<std::size_t> const& inputShape, std::uint32_t maxBatchSize,
              int cancel) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("cannot be tried out: ") + std::strerror(errno));
    system::Descriptor const verdict(ends[0]);
    system::Descriptor writer(ends[1]);
    auto const folder = GetBackEndFolder();
    std::vector<std::string> arguments{(folder / trial::ProgramFile).string(), (folder / BackEndFile).string(),
                                       std::to_string(maxBatchSize)};
    for (std::size_t const size : inputShape) arguments.push_back(std::to_string(size));
    Process process(Start(model, std::move(writer), std::move(arguments)));
    std::string const text = ReadVerdict(verdict.Get(), cancel);
    if (text == trial::Passed) return;
    if (!text.empty()) throw std::runtime_error(text);
    int const signal = process.Wait();
    throw std::runtime_error("makes the back end crash" +
                             (signal == 0 ? std::string() : std::string(" (") + strsignal(signal) + ")"));
}

}  // namespace qel::inference
