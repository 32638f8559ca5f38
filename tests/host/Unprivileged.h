#pragma once

#include <gtest/gtest.h>

#include <array>
#include <grp.h>
#include <unistd.h>

namespace hosttest {

/**
 * During its lifetime, a test run by the superuser acts as an ordinary user without groups, so that permissions are
 * checked.
 */
class Unprivileged {
public:
    Unprivileged() : user_(geteuid()), group_(getegid()), groupCount_(getgroups(64, groups_.data())) {
        if (user_ == 0) {
            constexpr unsigned kNobody = 65534;
            EXPECT_EQ(setgroups(0, nullptr), 0);
            EXPECT_EQ(setegid(kNobody), 0);
            EXPECT_EQ(seteuid(kNobody), 0);
        }
    }
    ~Unprivileged() {
        if (user_ == 0) {
            EXPECT_EQ(seteuid(user_), 0);
            EXPECT_EQ(setegid(group_), 0);
            EXPECT_EQ(setgroups(static_cast<std::size_t>(groupCount_), groups_.data()), 0);
        }
    }
    Unprivileged(Unprivileged const&) = delete;
    Unprivileged& operator=(Unprivileged const&) = delete;

private:
    uid_t user_;
    gid_t group_;
    std::array<gid_t, 64> groups_{};
    int groupCount_;
};

} // namespace hosttest
