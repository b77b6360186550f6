#include "support/rtsp_camera.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qel::test {
namespace {

/// What a process says until its first line ends.
std::string ReadFirstLine(int descriptor) {
    std::string line;
    char character = 0;
    while (line.empty() || line.back() != '\n') {
        ssize_t const count = read(descriptor, &character, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        line += character;
    }
    return line;
}

[[noreturn]] void Become(std::vector<std::string> const& words, int input, int output) {
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (std::string const& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

}  // namespace

void RtspCamera::Start(std::vector<std::string> const& options) {
    std::vector<std::string> words{QEL_TEST_RTSP_SERVER, "--port", port_};
    words.insert(words.end(), options.begin(), options.end());
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    process_ = fork();
    if (process_ < 0) throw std::runtime_error("fork");
    if (process_ == 0) Become(words, input[0], output[1]);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    std::string const line = ReadFirstLine(output[0]);
    close(output[0]);
    constexpr char Greeting[] = "listening ";
    if (line.rfind(Greeting, 0) != 0) {
        Kill();
        throw std::runtime_error("the camera does not start");
    }
    port_ = line.substr(sizeof Greeting - 1, line.size() - sizeof Greeting);
}

void RtspCamera::Kill() {
    if (process_ < 0) return;
    kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) continue;
    process_ = -1;
    close(input_);
}

void RtspCamera::Say(std::string const& command) const {
    std::string const line = command + "\n";
    if (write(input_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) throw std::runtime_error("write");
}

}  // namespace qel::test
