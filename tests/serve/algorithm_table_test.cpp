#include "algorithm_table.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::serve {
namespace {

using testing::StartsWith;

TEST(AlgorithmTable, FindsAlgorithmsByTheNamesOfTheirMaps) {
    host::Runtime runtime;
    AlgorithmTable const table(runtime);
    auto const* const entry = table.FindByName("Threshold");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->id, hash::MurmurThree32("test.Threshold"));
    EXPECT_EQ(entry->common, runtime.GetRoot().Find("algorithms.Threshold"));
    for (char const* const name : {"", "threshold", "test.Threshold", "info", "Thresh"}) {
        EXPECT_EQ(table.FindByName(name), nullptr) << name;
    }
}

TEST(AlgorithmTable, FindsAlgorithmsByTheNamesThatTheProgramTakes) {
    host::Runtime runtime;
    AlgorithmTable const table(runtime);
    for (char const* const name : {"threshold", "Threshold", "test.threshold"}) {
        EXPECT_EQ(table.FindByUse(name), table.FindByName("Threshold")) << name;
    }
    for (char const* const name : {"", "test", "info", "Sample"}) EXPECT_EQ(table.FindByUse(name), nullptr) << name;
    EXPECT_NE(table.FindByUse("test.other.Sample"), nullptr);
}

TEST(AlgorithmTable, ExplainsNamesThatMeanNoneOrSeveral) {
    host::Runtime runtime;
    AlgorithmTable const table(runtime);
    EXPECT_THAT(table.ExplainUnknown("Thresold"),
                StartsWith("there is no algorithm 'Thresold'; did you mean 'Threshold'? (known: Fail, Invert, "));
    EXPECT_EQ(table.ExplainUnknown("sample"),
              "the name 'sample' may mean several algorithms; write which one: test.Sample, test.other.Sample");
}

}  // namespace
}  // namespace qel::serve
