#include "support/process.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qel::test {
namespace {

constexpr auto LongestRun = std::chrono::minutes(2);

/// Two connected descriptors: what is written to the second is read from the first.
struct Channel {
    int reader = -1;
    int writer = -1;

    explicit Channel(bool terminal) {
        std::array<int, 2> ends{};
        if (terminal) {
            winsize size{24, 80, 0, 0};
            if (openpty(&reader, &writer, nullptr, nullptr, &size) != 0) throw std::runtime_error("openpty");
        } else {
            if (pipe(ends.data()) != 0) throw std::runtime_error("pipe");
            reader = ends[0];
            writer = ends[1];
        }
        fcntl(reader, F_SETFD, FD_CLOEXEC);
    }
    Channel(Channel const&) = delete;
    Channel& operator=(Channel const&) = delete;
    ~Channel() {
        CloseWriter();
        close(reader);
    }

    void CloseWriter() {
        if (writer >= 0) close(writer);
        writer = -1;
    }
};

[[noreturn]] void Become(Command const& command, int output, int error) {
    dup2(output, STDOUT_FILENO);
    dup2(error, STDERR_FILENO);
    for (auto const& [name, value] : command.environment) setenv(name.c_str(), value.c_str(), 1);
    if (command.prepare) command.prepare();
    std::vector<char*> arguments{const_cast<char*>(command.program.c_str())};
    for (std::string const& argument : command.arguments) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    execv(command.program.c_str(), arguments.data());
    _exit(127);
}

/// Reads what there is; false when nothing will come any more.
bool Drain(int descriptor, std::string& text) {
    std::array<char, 65536> bytes{};
    ssize_t const count = read(descriptor, bytes.data(), bytes.size());
    if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace

Outcome RunProcess(Command const& command) {
    Channel output(false);
    Channel error(command.terminal);
    int const file = command.outputFile.empty()
                         ? -1
                         : open(command.outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    pid_t const child = fork();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) Become(command, file >= 0 ? file : output.writer, error.writer);
    output.CloseWriter();
    error.CloseWriter();
    if (file >= 0) close(file);

    Outcome outcome;
    bool tooLong = false;
    auto const deadline = std::chrono::steady_clock::now() + LongestRun;
    std::array<pollfd, 2> open{{{output.reader, POLLIN, 0}, {error.reader, POLLIN, 0}}};
    while (open[0].fd >= 0 || open[1].fd >= 0) {
        poll(open.data(), open.size(), 20);
        if (open[0].revents != 0 && !Drain(output.reader, outcome.output)) open[0].fd = -1;
        if (open[1].revents != 0 && !Drain(error.reader, outcome.error)) open[1].fd = -1;
        for (pollfd& entry : open) entry.revents = 0;
        if (command.watch) command.watch(child, outcome.error);
        if (std::chrono::steady_clock::now() < deadline) continue;
        tooLong = true;
        kill(child, SIGKILL);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    if (tooLong) throw std::runtime_error("the program took too long: " + outcome.error);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return outcome;
}

}  // namespace qel::test
