#include "location.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

#include "error.hpp"
#include "gstreamer.hpp"

namespace qel::host {
namespace {

void CheckFile(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) throw Error("no such file: '" + path + "'");
        throw Error("cannot read '" + path + "': " + std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode)) throw Error("'" + path + "' is a directory, not a video file");
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
        throw Error("'" + path + "' is a device; open a camera by its URI, such as v4l2://" + path);
    }
    // GStreamer opens a file more than once; a pipe that its writer has left by then would be waited for in vain.
    if (S_ISFIFO(status.st_mode)) {
        throw Error("'" + path + "' is a pipe; read it from the standard input: qel run fd://0 < PIPE");
    }
    // The permissions that count are those of the effective user, which the plain access() does not look at.
    if (euidaccess(path.c_str(), R_OK) != 0) throw Error("cannot read '" + path + "': " + std::strerror(errno));
    if (S_ISREG(status.st_mode) && status.st_size == 0) throw Error("'" + path + "' is empty, not a video");
}

/// The URI without the password of its "user:password@".
std::string WithoutPassword(std::string const& uri) {
    std::size_t const start = uri.find("://") + 3;
    std::size_t const end = uri.find_first_of("/?#", start);
    std::size_t const at = uri.substr(0, end).rfind('@');
    std::size_t const colon = uri.find(':', start);
    if (at == std::string::npos || at < start || colon >= at) return uri;
    return uri.substr(0, colon) + uri.substr(at);
}

}  // namespace

bool IsStream(Location const& location) { return !location.file && location.uri.rfind("fd://", 0) != 0; }

Location Locate(std::string const& text) {
    if (text.empty()) throw Error("no video is named: the path is empty");
    if (text.find("://") == std::string::npos) {
        CheckFile(text);
        GError* raw = nullptr;
        GstPtr<gchar> const uri(g_filename_to_uri(std::filesystem::absolute(text).c_str(), nullptr, &raw));
        GstPtr<GError> const error(raw);
        if (!uri) throw Error("cannot open '" + text + "': " + (error ? error->message : "its path makes no URI"));
        return {uri.get(), text, text};
    }
    if (gst_uri_is_valid(text.c_str()) == FALSE) throw Error("'" + text + "' is not a URI");
    Location location{text, std::nullopt, WithoutPassword(text)};
    if (text.rfind("file://", 0) == 0) {
        gchar* rawHost = nullptr;
        GstPtr<gchar> const path(g_filename_from_uri(text.c_str(), &rawHost, nullptr));
        GstPtr<gchar> const host(rawHost);
        bool const here = !host || std::string_view(host.get()) == "localhost";
        if (!path || !here) throw Error("'" + text + "' names no file of this machine; write file:///path");
        location.file = path.get();
        CheckFile(*location.file);
    }
    return location;
}

}  // namespace qel::host
