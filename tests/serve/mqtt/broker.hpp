#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt::test {

/// A broker of this machine (mosquitto), which keeps its port and what it has stored when it is started again.
class Broker {
public:
    /// settings: further lines of its configuration; "FOLDER" stands for GetFolder().
    explicit Broker(std::vector<std::string> settings = {"allow_anonymous true"});
    Broker(Broker const&) = delete;
    Broker& operator=(Broker const&) = delete;
    ~Broker() { Kill(); }

    /// Waits until it answers.
    void Start();
    /// Has it store everything and end.
    void Stop() { End(15); }
    void Kill() { End(9); }
    /// Has it forget a client's session, where no client of GetPort finds it meanwhile. Requires that it was stopped or
    /// killed, and leaves it stopped.
    void ForgetClient(std::string const& name);
    /// It neither answers nor closes anything until it goes on or is killed.
    void Freeze() const;
    /// Waits until what it has stored is the same for half a second.
    void WaitUntilStored() const;

    unsigned short GetPort() const noexcept { return port_; }
    std::string GetFolder() const { return folder_.GetPath().string(); }

private:
    void StartSomewhere();
    bool TryStart();
    void End(int signal);

    qel::test::TemporaryDirectory folder_;
    std::vector<std::string> settings_;
    unsigned short port_ = 0;
    pid_t process_ = -1;
};

}  // namespace qel::serve::mqtt::test
