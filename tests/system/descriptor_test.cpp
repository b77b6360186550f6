#include "qel/system/descriptor.hpp"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace qel::system {
namespace {

/// The end of a pipe that is read, and the descriptor of the other one: the pipe has ended when that one is closed.
class DescriptorTest : public testing::Test {
protected:
    DescriptorTest() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("pipe2");
        reader_ = Descriptor(ends[0]);
        writer_ = Descriptor(ends[1]);
    }

    bool IsWriterOpen() const {
        char byte = 0;
        return read(reader_.Get(), &byte, 1) < 0 && errno == EAGAIN;
    }

    Descriptor reader_;
    Descriptor writer_;
};

TEST_F(DescriptorTest, ClosesWhatItOwnsAtItsEnd) {
    EXPECT_TRUE(writer_);
    {
        Descriptor const owner = std::move(writer_);
        EXPECT_TRUE(IsWriterOpen());
    }
    EXPECT_FALSE(IsWriterOpen());
}

TEST_F(DescriptorTest, OwnsNothingAfterAMove) {
    int const number = writer_.Get();
    Descriptor other(std::move(writer_));
    EXPECT_EQ(other.Get(), number);
    EXPECT_EQ(writer_.Get(), -1);
    EXPECT_FALSE(writer_);
    writer_ = std::move(other);
    EXPECT_EQ(writer_.Get(), number);
    EXPECT_FALSE(other);
    EXPECT_TRUE(IsWriterOpen());
}

TEST_F(DescriptorTest, ClosesWhatItOwnedWhenItIsGivenAnother) {
    writer_ = Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(writer_);
    EXPECT_FALSE(IsWriterOpen());
}

TEST_F(DescriptorTest, StaysWhatItIsWhenItIsMovedToItself) {
    Descriptor& same = writer_;
    writer_ = std::move(same);
    EXPECT_TRUE(writer_);
    EXPECT_TRUE(IsWriterOpen());
}

TEST_F(DescriptorTest, ClosesAtOnceAndOnlyOnce) {
    EXPECT_TRUE(writer_.Close());
    EXPECT_FALSE(writer_);
    EXPECT_FALSE(IsWriterOpen());
    errno = 0;
    EXPECT_FALSE(writer_.Close());
    EXPECT_EQ(errno, EBADF);
}

TEST(Descriptor, LeavesTheReasonOfAFailureToOpen) {
    Descriptor const none(open("/no/such/file", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(none);
    EXPECT_FALSE(Descriptor());
    EXPECT_EQ(Descriptor().Get(), -1);
}

}  // namespace
}  // namespace qel::system
