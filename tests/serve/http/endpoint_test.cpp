#include "http/endpoint.hpp"

#include <gtest/gtest.h>

#include "error.hpp"

namespace qel::serve::http {
namespace {

TEST(ParseEndpoint, TakesNumericAddresses) {
    EXPECT_EQ(ParseEndpoint("127.0.0.1:8080").ToUrl(), "http://127.0.0.1:8080");
    EXPECT_EQ(ParseEndpoint("localhost:0").ToUrl(), "http://127.0.0.1:0");
    EXPECT_EQ(ParseEndpoint("[::1]:65535").ToUrl(), "http://[::1]:65535");
    EXPECT_TRUE(ParseEndpoint("[::1]:1").IsLoopback());
    EXPECT_TRUE(ParseEndpoint("127.1.2.3:1").IsLoopback());
    EXPECT_FALSE(ParseEndpoint("0.0.0.0:1").IsLoopback());
    EXPECT_FALSE(ParseEndpoint("[::]:1").IsLoopback());
    for (char const* const text : {"", "8080", ":8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:65536",
                                   "127.0.0.1:-1", "::1:80", "[127.0.0.1]:80", "camera.example:80", "127.0.0.1:80 "}) {
        EXPECT_THROW(ParseEndpoint(text), host::UsageError) << text;
    }
}

}  // namespace
}  // namespace qel::serve::http
