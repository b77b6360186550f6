#include "qel/algorithm/metadata/normalization.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::algorithm::metadata {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(Normalization, GivesMeansAndDeviationsByChannel) {
    Normalization const normalization{{0.1F, 0.2F, 0.3F}, {1.1F, 1.2F, 1.3F}};
    EXPECT_THAT(normalization.GetMeans(), ElementsAre(0.1F, 0.2F, 0.3F));
    EXPECT_THAT(normalization.GetStandardDeviations(), ElementsAre(1.1F, 1.2F, 1.3F));
    EXPECT_EQ(normalization.GetMeans().data(), normalization.means.data());
    EXPECT_THAT(normalization.GetMeanWithDeviation(0), Pair(0.1F, 1.1F));
    EXPECT_THAT(normalization.GetMeanWithDeviation(2), Pair(0.3F, 1.3F));
    EXPECT_EQ(sizeof(Normalization), 24U);
}

TEST(Normalization, HasThreeChannels) {
    for (std::size_t const index : {std::size_t{3}, ~std::size_t{0}}) {
        try {
            Normalization().GetMeanWithDeviation(index);
            FAIL();
        } catch (std::out_of_range const& error) {
            EXPECT_STREQ(error.what(), "Normalization index too large");
        }
    }
}

}  // namespace
}  // namespace qel::algorithm::metadata
