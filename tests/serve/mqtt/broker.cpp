#include "broker.hpp"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qel::serve::mqtt::test {
namespace {

bool Answers(unsigned short port) {
    int const descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool const connected = connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    close(descriptor);
    return connected;
}

}  // namespace

Broker::Broker(std::vector<std::string> settings) : settings_(std::move(settings)) {
    for (auto& line : settings_) {
        if (auto const at = line.find("FOLDER"); at != std::string::npos) line.replace(at, 6, GetFolder());
    }
    StartSomewhere();
}

void Broker::StartSomewhere() {
    // Below the ports that the system gives to connections going out: nobody takes it while the broker is away.
    std::random_device random;
    for (int attempt = 0; attempt < 20; ++attempt) {
        port_ = static_cast<unsigned short>(10'000 + random() % 20'000);
        if (!Answers(port_) && TryStart()) return;
    }
    throw std::runtime_error("the broker cannot be started");
}

void Broker::ForgetClient(std::string const& name) {
    unsigned short const port = port_;
    StartSomewhere();
    // A session that begins anew and ends with its connection.
    std::string const command =
        "mosquitto_pub -V 5 -h 127.0.0.1 -p " + std::to_string(port_) + " -i " + name + " -t other -m x";
    int const result = std::system(command.c_str());
    Stop();
    port_ = port;
    if (result != 0) throw std::runtime_error("the broker does not take another client");
}

void Broker::Start() {
    for (int attempt = 0; attempt < 20; ++attempt) {
        if (TryStart()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    throw std::runtime_error("the broker cannot be started again");
}

bool Broker::TryStart() {
    std::string text = "listener " + std::to_string(port_) + " 127.0.0.1\npersistence true\npersistence_location " +
                       GetFolder() + "/\nmax_queued_messages 0\nuser " + getpwuid(geteuid())->pw_name + "\n";
    for (auto const& line : settings_) text += line + "\n";
    std::string const path = folder_ / "broker.conf";
    std::string const log = folder_ / "broker.log";
    qel::test::WriteFile(path, text);
    process_ = fork();
    if (process_ == 0) {
        int const output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        execl(QEL_MOSQUITTO, "mosquitto", "-c", path.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    for (int i = 0; i < 3000; ++i) {
        if (waitpid(process_, nullptr, WNOHANG) != 0) {
            process_ = -1;
            return false;
        }
        if (Answers(port_)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    Kill();
    return false;
}

void Broker::End(int signal) {
    if (process_ < 0) return;
    kill(process_, signal);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

void Broker::Freeze() const {
    kill(process_, SIGSTOP);
    // Until then it may still take a message.
    waitpid(process_, nullptr, WUNTRACED);
}

void Broker::WaitUntilStored() const {
    std::string before;
    for (int same = 0; same < 5;) {
        std::string now = qel::test::ReadFile(folder_ / "mosquitto.db");
        same = !now.empty() && now == before ? same + 1 : 0;
        before = std::move(now);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

}  // namespace qel::serve::mqtt::test
