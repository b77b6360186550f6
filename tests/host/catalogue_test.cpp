#include "catalogue.hpp"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "support/message_of.hpp"

namespace qel::host {
namespace {

namespace registry = algorithm::video::registry;
using qel::test::MessageOf;

bool Register(char const* name, registry::Info::Make make) {
    return registry::Register({hash::MurmurThree32(name), name, std::move(make), {}, {}});
}

[[maybe_unused]] bool const Registered =
    Register("test.Same", {}) && Register("other.Same", {}) &&
    Register("test.Broken",
             [](auto&) -> std::shared_ptr<algorithm::video::Algorithm> { throw std::runtime_error("no model"); }) &&
    Register("test.Nothing", [](auto&) { return std::shared_ptr<algorithm::video::Algorithm>(); });

TEST(FindAlgorithm, TakesTypeNamesAndTheirLastPartsWhateverTheCapitals) {
    hash::MurmurThree32 const id("test.Threshold");
    for (char const* name : {"test.Threshold", "TEST.threshold", "Threshold", "threshold", "THRESHOLD"}) {
        EXPECT_EQ(FindAlgorithm(name), id) << name;
    }
    for (char const* name : {"", "test", ".Threshold", "est.Threshold", "Threshold ", "thresh"}) {
        EXPECT_THAT(MessageOf<UsageError>([&] { (void)FindAlgorithm(name); }),
                    testing::StartsWith("unknown algorithm '" + std::string(name) +
                                        "' (known: other.Same, test.Broken, test.Fail, "))
            << name;
    }
}

TEST(FindAlgorithm, AsksForTheWholeNameWhenTwoShareTheirLastPart) {
    EXPECT_EQ(MessageOf<UsageError>([] { (void)FindAlgorithm("same"); }),
              "'same' may mean several algorithms: other.Same, test.Same");
    EXPECT_EQ(FindAlgorithm("other.Same"), hash::MurmurThree32("other.Same"));
}

TEST(DescribeAlgorithms, GoesOnPastAlgorithmsThatCannotBeMade) {
    Runtime runtime;
    auto const descriptions = DescribeAlgorithms(runtime);
    auto const find = [&](std::string const& name) {
        return *std::find_if(descriptions.begin(), descriptions.end(),
                             [&](auto const& d) { return d.typeName == name; });
    };
    EXPECT_EQ(find("test.Broken").problem, "no model");
    EXPECT_EQ(find("test.Nothing").problem, "its factory gives nothing");
    EXPECT_FALSE(find("test.Same").problem.empty());
    EXPECT_EQ(find("test.Threshold").problem, "");
    EXPECT_EQ(find("test.Threshold").properties.size(), 5U);
    EXPECT_EQ(find("test.Invert").kind, "inplace");
    EXPECT_THAT(find("test.Invert").file, testing::EndsWith("qel_host_test"));
    EXPECT_TRUE(std::is_sorted(descriptions.begin(), descriptions.end(),
                               [](auto const& a, auto const& b) { return a.typeName < b.typeName; }));
}

}  // namespace
}  // namespace qel::host
