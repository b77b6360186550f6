#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

namespace qel::test {

/// Gives up the rights of the super-user, whom no permission stops, for as long as it lives.
class Unprivileged {
public:
    Unprivileged() : former_(geteuid()) {
        if (former_ == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    Unprivileged(Unprivileged const&) = delete;
    Unprivileged& operator=(Unprivileged const&) = delete;
    ~Unprivileged() {
        if (former_ == 0) {
            EXPECT_EQ(seteuid(former_), 0);
        }
    }

private:
    uid_t former_;
};

}  // namespace qel::test
