#include "mqtt/spooled_line.hpp"

#include <gtest/gtest.h>

namespace qel::serve::mqtt {
namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;

TEST(SpooledLine, ComesOutAsItWasPutIn) {
    SpooledLine const line{system_clock::time_point(milliseconds(1'772'366'400'007)), "gate", "{\"a\":\"1\"}"};
    std::string const record = line.Pack();
    EXPECT_EQ(record, "1772366400007\ngate\n{\"a\":\"1\"}");
    SpooledLine const back = SpooledLine::Unpack(record).value();
    EXPECT_EQ(back.time, line.time);
    EXPECT_EQ(back.stream, line.stream);
    EXPECT_EQ(back.text, line.text);
}

TEST(SpooledLine, KeepsLineFeedsOfTheText) {
    EXPECT_EQ(SpooledLine::Unpack("0\ngate\na\nb\n").value().text, "a\nb\n");
    EXPECT_EQ(SpooledLine::Unpack("0\ngate\n").value().text, "");
}

TEST(SpooledLine, IsNothingOfWhatWasNotPackedAsOne) {
    for (char const* const record :
         {"", "\n", "\n\n", "0", "0\n", "0\ngate", "gate\n0\n", "1x\ngate\n", " 1\ngate\n", "+1\ngate\n",
          "9223372036854775808\ngate\n", "9223372036854775807\ngate\n", "-9223372036854775808\ngate\n"}) {
        EXPECT_FALSE(SpooledLine::Unpack(record)) << record;
    }
    EXPECT_EQ(SpooledLine::Unpack("-1\n\n").value().time, system_clock::time_point(milliseconds(-1)));
    EXPECT_TRUE(SpooledLine::Unpack("9223372036854\ngate\n")) << "the year 2262";
}

}  // namespace
}  // namespace qel::serve::mqtt
