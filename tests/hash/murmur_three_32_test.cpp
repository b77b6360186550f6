#include "qel/hash/murmur_three_32.hpp"

#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>

#include <gtest/gtest.h>

namespace qel::hash {
namespace {

TEST(MurmurThree32, MatchesThePublishedVectors) {
    struct Case {
        std::string_view text;
        std::uint32_t seed, hash;
    };
    using namespace std::string_view_literals;
    constexpr Case Cases[] = {
        {"", 0, 0},
        {"", 1, 0x514e28b7},
        {"", 0xffffffff, 0x81f16f39},
        {"\0\0\0\0"sv, 0, 0x2362f9de},
        {"\xff\xff\xff\xff"sv, 0, 0x76293b50},
        {"\x21\x43\x65\x87"sv, 0, 0xf55b516b},
        {"\x21\x43\x65\x87"sv, 0x5082edee, 0x2362f9de},
        {"\x21\x43\x65"sv, 0, 0x7e4a8634},
        {"\x21\x43"sv, 0, 0xa0f7b07a},
        {"\x21"sv, 0, 0x72661cf4},
        {"\0\0\0"sv, 0, 0x85f0b427},
        {"\0\0"sv, 0, 0x30f4c306},
        {"\0"sv, 0, 0x514e28b7},
        {"aaaa", 0x9747b28c, 0x5a97808a},
        {"aaa", 0x9747b28c, 0x283e0130},
        {"aa", 0x9747b28c, 0x5d211726},
        {"a", 0x9747b28c, 0x7fa09ea6},
        {"abcd", 0x9747b28c, 0xf0478627},
        {"Hello, world!", 0x9747b28c, 0x24884cba},
        {"The quick brown fox jumps over the lazy dog", 0x9747b28c, 0x2fa826cd},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(std::string(c.text));
        EXPECT_EQ(MurmurThree32(c.text, c.seed).GetValue(), c.hash);
    }
}

TEST(MurmurThree32, IsAConstantOfTheCompilerAndLeavesOutTheClosingNul) {
    constexpr MurmurThree32 Id("abcd");
    static_assert(Id == MurmurThree32(std::string_view("abcd\0", 4)));
    static_assert(Id != MurmurThree32(std::string_view("abcd\0", 5)));
    static_assert(MurmurThree32() == MurmurThree32(0U));
    EXPECT_EQ(Id, MurmurThree32(std::string("abcd")));
}

TEST(MurmurThree32, WritesEightHexadecimalDigitsWhateverTheFlags) {
    std::ostringstream stream;
    stream << std::setfill('*') << std::showbase << MurmurThree32(0x2aU) << ' ' << 7;
    EXPECT_EQ(stream.str(), "0000002a 7");
}

TEST(MurmurThree32, IsAKeyOfUnorderedContainers) {
    std::unordered_set<MurmurThree32> const ids = {MurmurThree32("a"), MurmurThree32("b"), MurmurThree32("a")};
    EXPECT_EQ(ids.size(), 2U);
}

}  // namespace
}  // namespace qel::hash
