#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/logging/logger.hpp"

namespace qel::logging {
namespace {

/// Logs while static objects are made, before main.
struct Early {
    Logger logger{Name("qel.test.Early")};
    std::string text = Write();
    std::string Write() {
        testing::internal::CaptureStderr();
        logger.Log(Level::Error, "before main");
        return testing::internal::GetCapturedStderr();
    }
} const early;

TEST(Console, GetsALineWithTimeLevelAndNameWhenNoSinkIsBound) {
    Logger const logger{Name("qel.test.Console")};
    testing::internal::CaptureStderr();
    logger.Log(Level::Warning, "%0% {} is gone", "model");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}Z "
                                      "warning qel[.]test[.]Console: model [{][}] is gone\n"));
}

TEST(Console, TakesLinesBeforeMain) {
    EXPECT_THAT(early.text, testing::HasSubstr("error qel.test.Early: before main\n"));
}

}  // namespace
}  // namespace qel::logging
