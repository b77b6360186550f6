#include "qel/inference/metadata.hpp"

#include <sstream>

#include <cereal/archives/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::inference {
namespace {

Metadata Read(std::string const& json) {
    std::istringstream stream(json);
    cereal::JSONInputArchive archive(stream);
    Metadata metadata;
    metadata.Serialize(archive);
    return metadata;
}

TEST(Metadata, KnowsNothingAtFirst) {
    Metadata const metadata;
    EXPECT_EQ(metadata.GetMaxBatchSize(), 0U);
    EXPECT_EQ(metadata.GetBackendLoadingPriority(), 0);
    EXPECT_EQ(metadata.GetVersion(), "");
}

TEST(Metadata, ReadsItsMembersInAnyOrderAndIgnoresOthers) {
    auto const metadata =
        Read(R"({"x": {}, "version": "1.2", "backend_loading_priority": -7, "max_batch_size": 8, "y": [1]})");
    EXPECT_EQ(metadata.GetMaxBatchSize(), 8U);
    EXPECT_EQ(metadata.GetBackendLoadingPriority(), -7);
    EXPECT_EQ(metadata.GetVersion(), "1.2");
}

TEST(Metadata, TakesTheWholeRangesOfItsNumbers) {
    EXPECT_EQ(Read(R"({"max_batch_size": 4294967295})").GetMaxBatchSize(), 4294967295U);
    EXPECT_EQ(Read(R"({"max_batch_size": 0})").GetMaxBatchSize(), 0U);
    EXPECT_EQ(Read(R"({"max_batch_size": 1, "backend_loading_priority": 2147483647})").GetBackendLoadingPriority(),
              2147483647);
    EXPECT_EQ(Read(R"({"max_batch_size": 1, "backend_loading_priority": -2147483648})").GetBackendLoadingPriority(),
              -2147483648);
}

TEST(Metadata, HasTheVersionUnknownWithoutATextForIt) {
    for (char const* json : {R"({"max_batch_size": 1})", R"({"max_batch_size": 1, "version": 2})",
                             R"({"max_batch_size": 1, "version": null})", R"({"max_batch_size": 1, "version": {}})",
                             R"({"version": [], "max_batch_size": 1})", R"({"max_batch_size": 1, "Version": "1"})"}) {
        SCOPED_TRACE(json);
        EXPECT_EQ(Read(json).GetVersion(), "unknown");
    }
    EXPECT_EQ(Read(R"({"max_batch_size": 1, "version": ""})").GetVersion(), "");
}

TEST(Metadata, HasThePriorityNoughtWithoutAnIntegerForItAndStillReadsTheVersion) {
    for (char const* priority : {R"("7")", "1.5", "true", "null", "{}", "2147483648", "-2147483649", "1e3"}) {
        SCOPED_TRACE(priority);
        auto const metadata =
            Read(std::string(R"({"max_batch_size": 1, "version": "3", "backend_loading_priority": )") + priority + "}");
        EXPECT_EQ(metadata.GetBackendLoadingPriority(), 0);
        EXPECT_EQ(metadata.GetVersion(), "3");
    }
}

TEST(Metadata, MustHaveABatchSize) {
    for (char const* json : {"{}", R"({"version": "1"})", "[]", R"([{"max_batch_size": 1}])"}) {
        SCOPED_TRACE(json);
        try {
            Read(json);
            FAIL();
        } catch (cereal::Exception const& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("JSON Parsing failed - provided NVP"));
        }
    }
    for (char const* size : {"-1", "4294967296", "1.0", R"("1")", "true", "null", "[1]"}) {
        SCOPED_TRACE(size);
        EXPECT_THROW(Read(std::string(R"({"max_batch_size": )") + size + "}"), cereal::Exception);
    }
}

TEST(Metadata, StaysAsItIsWhenItCannotBeRead) {
    auto metadata = Read(R"({"max_batch_size": 8, "backend_loading_priority": 2, "version": "1"})");
    std::istringstream stream(R"({"backend_loading_priority": 3, "version": "2"})");
    cereal::JSONInputArchive archive(stream);
    EXPECT_THROW(metadata.Serialize(archive), cereal::Exception);
    EXPECT_EQ(metadata.GetMaxBatchSize(), 8U);
    EXPECT_EQ(metadata.GetBackendLoadingPriority(), 2);
    EXPECT_EQ(metadata.GetVersion(), "1");
}

}  // namespace
}  // namespace qel::inference
