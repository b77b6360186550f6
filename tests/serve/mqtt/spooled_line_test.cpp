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
    SpooledLine const back = SpooledLine::Unpack(record);
    EXPECT_EQ(back.time, line.time);
    EXPECT_EQ(back.stream, line.stream);
    EXPECT_EQ(back.text, line.text);
}

TEST(SpooledLine, KeepsLineFeedsOfTheText) {
    EXPECT_EQ(SpooledLine::Unpack("0\ngate\na\nb\n").text, "a\nb\n");
    EXPECT_EQ(SpooledLine::Unpack("0\ngate\n").text, "");
}

}  // namespace
}  // namespace qel::serve::mqtt
