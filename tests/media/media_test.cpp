#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "qel/media/colour/rgb.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/time_point.hpp"
#include "qel/media/video/frame/rotation.hpp"
#include "qel/type/to_string.hpp"

namespace qel::media {
namespace {

std::string Text(auto const& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

TEST(ColourFormat, WritesItsNameQuotedOrItsNumber) {
    EXPECT_EQ(Text(ColourFormat::Grey8), "\"Grey8\"");
    EXPECT_EQ(Text(ColourFormat(4)), "\"Nv12\"");
    EXPECT_EQ(Text(ColourFormat(5)), "5");
    EXPECT_EQ(Text(ColourFormat(-1)), "-1");
}

TEST(ColourFormat, IsNumberedFromGreyToNv12) {
    EXPECT_EQ(type::ToString(ColourFormat(1)), "Rgb24");
    EXPECT_EQ(type::ToString(ColourFormat(2)), "Bgr24");
    EXPECT_EQ(type::ToString(ColourFormat(3)), "Yuv24");
    EXPECT_THROW(type::ToString(ColourFormat(5)), std::invalid_argument);
}

TEST(Rotation, NamesAllFourQuarterTurns) {
    EXPECT_EQ(type::ToString(video::frame::Rotation::None), "none");
    EXPECT_EQ(type::ToString(video::frame::Rotation::Clockwise270), "clockwise_270");
    EXPECT_EQ(type::Strings<video::frame::Rotation>::GetMap().size(), 4U);
}

TEST(TimePoint, WritesUtcWithNanoseconds) {
    using std::chrono::nanoseconds;
    EXPECT_EQ(Text(TimePoint()), "\"1970-01-01T00:00:00.000000000Z\"");
    EXPECT_EQ(Text(TimePoint(nanoseconds(1772366400000000001))), "\"2026-03-01T12:00:00.000000001Z\"");
    EXPECT_EQ(Text(TimePoint(nanoseconds(-1))), "\"1969-12-31T23:59:59.999999999Z\"");
    EXPECT_EQ(Text(TimePoint(nanoseconds::max())), "\"2262-04-11T23:47:16.854775807Z\"");
    EXPECT_EQ(Text(TimePoint(nanoseconds::min())), "\"1677-09-21T00:12:43.145224192Z\"");
}

}  // namespace
}  // namespace qel::media
