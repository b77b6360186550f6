#include "mqtt/password.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <sys/stat.h>

#include "error.hpp"

namespace qel::serve::mqtt {

std::string ReadPassword(std::string const& file) {
    if (file.empty()) {
        char const* const password = std::getenv("QEL_MQTT_PASSWORD");
        return password == nullptr ? std::string() : password;
    }
    auto const refuse = [&file](std::string const& reason) {
        throw host::UsageError("the password file '" + file + "' " + reason);
    };
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) refuse(std::string("cannot be read: ") + std::strerror(errno));
    if (!S_ISREG(status.st_mode)) refuse("is no file");
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) refuse("can be read or changed by other users: chmod 600 it");
    std::ifstream stream(file);
    if (!stream) refuse(std::string("cannot be read: ") + std::strerror(errno));
    std::string password;
    std::getline(stream, password);
    if (password.ends_with('\r')) password.pop_back();
    if (password.empty()) refuse("holds no password in its first line");
    return password;
}

}  // namespace qel::serve::mqtt
