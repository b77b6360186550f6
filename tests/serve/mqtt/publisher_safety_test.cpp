// Who may publish, and to whom: names, passwords and certificates.
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>
#include <prometheus/registry.h>

#include "broker.hpp"
#include "error.hpp"
#include "mqtt/publisher.hpp"
#include "qel/logging/sink.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using qel::test::TemporaryDirectory;
using std::chrono::milliseconds;
using test::Broker;

/// What the publisher says first, or "connected".
std::string TryToConnect(Publisher::Options options, TemporaryDirectory const& folder) {
    options.spool = folder / "spool";
    options.broker.host = options.broker.tls ? "localhost" : "127.0.0.1";
    options.firstPause = options.longestPause = milliseconds(50);
    std::mutex mutex;
    std::string said;
    auto const binding = logging::BindSink([&](logging::Level, std::string_view, std::string_view text) {
        std::lock_guard const guard(mutex);
        if (said.empty()) said = text;
    });
    prometheus::Registry metrics;
    Publisher const publisher(options, metrics);
    for (int i = 0; i < 6000; ++i) {
        if (publisher.IsConnected()) return "connected";
        std::this_thread::sleep_for(milliseconds(10));
        std::lock_guard const guard(mutex);
        if (!said.empty()) return said;
    }
    return "nothing happened";
}

void Shell(std::string const& command) {
    ASSERT_EQ(std::system((command + " > /dev/null 2>&1").c_str()), 0) << command;
}

TEST(PublisherSafety, ShowsItsNameAndPassword) {
    TemporaryDirectory const folder;
    std::string const passwords = folder / "passwords";
    Shell("mosquitto_passwd -b -c " + passwords + " me 'open: sesame'");
    Broker broker({"allow_anonymous false", "password_file " + passwords});
    struct Case {
        char const *user, *password;
        bool right;
    };
    constexpr Case Cases[] = {
        {"me", "open: sesame", true}, {"me", "open", false}, {"me", "", false}, {"", "", false}, {"you", "x", false},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.password);
        Publisher::Options options;
        options.broker.port = broker.GetPort();
        options.broker.user = c.user;
        options.broker.password = c.password;
        EXPECT_EQ(TryToConnect(options, folder),
                  c.right ? "connected"
                          : "no connection to the broker mqtt://127.0.0.1:" + std::to_string(broker.GetPort()) +
                                ": the broker refuses: Not authorized; lines are kept in '" + folder / "spool" +
                                "' until there is one");
    }
}

/// Makes a key, and a certificate for the name that it signs itself.
void MakeCertificate(TemporaryDirectory const& folder, std::string const& file, std::string const& name) {
    Shell("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=" + name +
          " -addext subjectAltName=DNS:" + name + " -keyout " + (folder / (file + ".key")) + " -out " +
          (folder / (file + ".pem")));
}

TEST(PublisherSafety, ConnectsByTlsToTheBrokerThatIsTrustedForItsNameOnly) {
    TemporaryDirectory const folder;
    MakeCertificate(folder, "right", "localhost");
    MakeCertificate(folder, "other", "localhost");
    MakeCertificate(folder, "stranger", "broker.example");
    struct Case {
        char const *shown, *trusted;
        bool right;
    };
    constexpr Case Cases[] = {
        {"right", "right", true},
        {"right", "other", false},
        {"stranger", "stranger", false},
        {"right", "", false},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(std::string(c.shown) + " " + c.trusted);
        Broker broker({"allow_anonymous true", "certfile " + folder / (std::string(c.shown) + ".pem"),
                       "keyfile " + folder / (std::string(c.shown) + ".key")});
        Publisher::Options options;
        options.broker.tls = true;
        options.broker.port = broker.GetPort();
        if (*c.trusted != '\0') options.broker.authorities = folder / (std::string(c.trusted) + ".pem");
        std::string const said = TryToConnect(options, folder);
        if (c.right) {
            EXPECT_EQ(said, "connected");
        } else {
            EXPECT_NE(said.find("certificate verify failed"), std::string::npos) << said;
        }
    }
}

TEST(PublisherSafety, SaysWhichCertificatesCannotBeRead) {
    TemporaryDirectory const folder;
    Publisher::Options options;
    options.spool = folder / "spool";
    options.broker.tls = true;
    options.broker.authorities = folder / "missing.pem";
    prometheus::Registry metrics;
    EXPECT_EQ(qel::test::MessageOf<host::Error>([&] { Publisher publisher(options, metrics); }),
              "cannot read the certificates in '" + folder / "missing.pem" + "'");
}

}  // namespace
}  // namespace qel::serve::mqtt
