#include "opencv/picture_blob.hpp"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::inference {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

std::vector<float> Values(cv::Mat const& blob) { return {blob.ptr<float>(), blob.ptr<float>() + blob.total()}; }

/// The values of a grey picture of the bytes that is brought to a size.
std::vector<float> Resized(std::vector<std::uint8_t> const& bytes, unsigned int width, unsigned int height,
                           unsigned int toWidth, unsigned int toHeight) {
    Picture const picture{bytes.data(), static_cast<std::ptrdiff_t>(width), width, height};
    cv::Mat blob;
    MakeBlob(boost::span<Picture const>(&picture, 1), {.width = toWidth, .height = toHeight, .channels = 1}, blob);
    return Values(blob);
}

TEST(MakeBlob, KeepsEverySampleInItsPlaceInOnePlaneAChannel) {
    std::vector<std::uint8_t> const bytes{1,  2,  3,  4,  5,  6,  7,  8,  9,  99, 99,  // three pixels and padding
                                          11, 12, 13, 14, 15, 16, 17, 18, 19, 99, 99};
    Picture const picture{bytes.data(), 11, 3, 2, 3};
    cv::Mat blob;
    MakeBlob(boost::span<Picture const>(&picture, 1), {.width = 3, .height = 2}, blob);
    EXPECT_THAT(std::vector<int>(blob.size.p, blob.size.p + blob.dims), ElementsAre(1, 3, 2, 3));
    EXPECT_THAT(Values(blob), ElementsAre(1, 4, 7, 11, 14, 17, 2, 5, 8, 12, 15, 18, 3, 6, 9, 13, 16, 19));
}

TEST(MakeBlob, KeepsEverySampleOfAPictureWhoseRowsRunUpwards) {
    std::vector<std::uint8_t> const bytes{4, 5, 6, 99, 1, 2, 3, 99};
    Picture const picture{bytes.data() + 4, -4, 3, 2};
    cv::Mat blob;
    MakeBlob(boost::span<Picture const>(&picture, 1), {.width = 3, .height = 2, .channels = 1}, blob);
    EXPECT_THAT(Values(blob), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST(MakeBlob, AveragesLargerPicturesOverAreas) {
    std::vector<std::uint8_t> bytes(64, 16);
    bytes[0] = 96;           // alone in the corner of the first of four areas of sixteen samples
    bytes[8 * 7 + 4] = 176;  // and of the last
    EXPECT_THAT(Resized(bytes, 8, 8, 2, 2), ElementsAre(21, 16, 16, 26));
}

TEST(MakeBlob, EnlargesSmallerPicturesBilinearly) {
    EXPECT_THAT(Resized({0, 100}, 2, 1, 4, 1), ElementsAre(0, 25, 75, 100));
    EXPECT_THAT(Resized({0, 100}, 1, 2, 1, 4), ElementsAre(0, 25, 75, 100));
}

TEST(MakeBlob, TakesTheMiddlesOfSamplesWhereOneSideOnlyShrinks) {
    // Four columns become one, which lies between the second and the third; one row becomes two.
    EXPECT_THAT(Resized({200, 10, 30, 200}, 4, 1, 1, 2), ElementsAre(20, 20));
}

TEST(MakeBlob, PutsPicturesOfAnySizesOneBehindTheOther) {
    std::vector<std::uint8_t> const first(6, 10), second(1, 20), third(64, 30);
    Picture const pictures[] = {{first.data(), 3, 3, 2}, {second.data(), 1, 1, 1}, {third.data(), 8, 8, 8}};
    cv::Mat blob;
    PictureFormat const format{.width = 2, .height = 2, .channels = 1};
    MakeBlob(pictures, format, blob);
    EXPECT_THAT(Values(blob), ElementsAreArray({10, 10, 10, 10, 20, 20, 20, 20, 30, 30, 30, 30}));
    float const* const memory = blob.ptr<float>();
    MakeBlob(pictures, format, blob);
    EXPECT_EQ(blob.ptr<float>(), memory) << "used again";
}

}  // namespace
}  // namespace qel::inference
