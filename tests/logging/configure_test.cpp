#include "qel/logging/configure.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "logging/captured_lines.hpp"
#include "qel/logging/logger.hpp"

namespace qel::logging {
namespace {

/// The lowest level that a logger of this name writes.
Level ThresholdOf(char const* name) {
    Logger const logger{Name(name)};
    for (int level = 1; level < 64; level *= 2) {
        if (logger.IsEnabled(static_cast<Level>(level))) return static_cast<Level>(level);
    }
    return Level::Off;
}

TEST(Configure, SetsThresholdsByNameAndDefault) {
    CapturedLines const restore;
    struct Case {
        char const* text;
        char const* name;
        Level expected;
    };
    constexpr Case Cases[] = {
        {"", "qel.a", Level::Warning},
        {" \t\n", "qel.a", Level::Warning},
        {"debug", "qel.a", Level::Debug},
        {"off", "qel.a", Level::Off},
        {"qel.a=debug", "qel.a", Level::Debug},
        {"qel.a=debug", "qel.a.B", Level::Debug},
        {"qel.a=debug", "qel.a.B.C", Level::Debug},
        {"qel.a=debug", "qel.ab", Level::Warning},
        {"qel.a=debug", "qel", Level::Warning},
        {"qel.a=debug,error", "qel.b", Level::Error},
        {"error,qel.a=debug", "qel.b", Level::Error},
        {"qel=error,qel.a=debug", "qel.a.B", Level::Debug},
        {"qel.a=debug,qel=error", "qel.a.B", Level::Debug},
        {"qel.a=debug,qel=error", "qel.b", Level::Error},
        {"qel.a=debug,qel.a=off", "qel.a", Level::Off},
        {"debug,notice", "qel.a", Level::Notice},
        {" qel.a = debug , notice ", "qel.a", Level::Debug},
        {"inf", "qel.a", Level::Information},
        {"info", "qel.a", Level::Information},
        {"warn", "qel.a", Level::Warning},
        {"crit", "qel.a", Level::Critical},
        {"qel.a-1_b=err", "qel.a-1_b", Level::Error},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(std::string(c.text) + " for " + c.name);
        Configure(c.text);
        EXPECT_EQ(ThresholdOf(c.name), c.expected);
    }
}

TEST(Configure, ReplacesWhatWasSetBefore) {
    CapturedLines const restore;
    Configure("qel.a=debug,error");
    Configure("qel.b=debug");
    EXPECT_EQ(ThresholdOf("qel.a"), Level::Warning);
    EXPECT_EQ(ThresholdOf("qel.c"), Level::Warning);
}

TEST(Configure, RefusesWhatIsNoListOfRulesAndChangesNothing) {
    CapturedLines const restore;
    std::string const levels =
        " names no level: the levels are debug, information, notice, warning, error, critical, off";
    std::string const names = " names no logger: it reads name=level, as in qel.algorithm=debug";
    struct Case {
        char const* text;
        std::string expected;
    };
    Case const cases[] = {
        {"debgu", "'debgu'" + levels},
        {"qel.a=debug,qel.b=loud", "'qel.b=loud'" + levels},
        {"in", "'in'" + levels},
        {"informations", "'informations'" + levels},
        {"Debug", "'Debug'" + levels},
        {"2", "'2'" + levels},
        {"qel.a", "'qel.a'" + levels},
        {"qel.a=", "'qel.a='" + levels},
        {"debug,", "''" + levels},
        {",", "''" + levels},
        {"a=debug=off", "'a=debug=off'" + levels},
        {"=debug", "'=debug'" + names},
        {".a=debug", "'.a=debug'" + names},
        {"a.=debug", "'a.=debug'" + names},
        {"a..b=debug", "'a..b=debug'" + names},
        {"a b=debug", "'a b=debug'" + names},
        {"a*=debug", "'a*=debug'" + names},
    };
    Configure("qel.a=error");
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        try {
            Configure(c.text);
            FAIL();
        } catch (std::invalid_argument const& error) {
            EXPECT_EQ(error.what(), "The logging rule " + c.expected);
        }
        EXPECT_EQ(ThresholdOf("qel.a"), Level::Error);
    }
}

}  // namespace
}  // namespace qel::logging
