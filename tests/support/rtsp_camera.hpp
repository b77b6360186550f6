#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace qel::test {

/// A camera of this machine, whose RTSP server is a process of its own; it keeps its port when it is started again.
///
/// Shows a bright square of 48 x 48 pixels that moves over grey, 320 x 240 pixels, 25 frames a second.
class RtspCamera {
public:
    /// options: those of qel_test_rtsp_server.
    explicit RtspCamera(std::vector<std::string> const& options = {}) { Start(options); }
    RtspCamera(RtspCamera const&) = delete;
    RtspCamera& operator=(RtspCamera const&) = delete;
    ~RtspCamera() { Kill(); }

    std::string GetUri() const { return "rtsp://127.0.0.1:" + port_ + "/camera"; }

    void Start(std::vector<std::string> const& options = {});
    void Kill();
    /// Gives it a command: "stall", "go", "size WIDTH HEIGHT" or "end".
    void Say(std::string const& command) const;

private:
    std::string port_ = "0";
    pid_t process_ = -1;
    int input_ = -1;
};

}  // namespace qel::test
