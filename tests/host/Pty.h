#pragma once

#include "base/FileDescriptor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>

namespace hosttest {

/** A pseudo-terminal: the test holds one side, the port under test opens the other by its path. */
class Pty {
public:
    Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_TRUE(master_.isOpen());
        EXPECT_EQ(grantpt(master_.get()), 0);
        EXPECT_EQ(unlockpt(master_.get()), 0);
        char name[64] = {};
        EXPECT_EQ(ptsname_r(master_.get(), name, sizeof name), 0);
        path_ = name;
    }

    std::string const& path() const { return path_; }

    void send(std::span<unsigned char const> bytes) const {
        ASSERT_EQ(::write(master_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    /** @p count bytes from the port; fewer when nothing arrives for ten seconds. */
    std::vector<unsigned char> receive(std::size_t count) const {
        std::vector<unsigned char> bytes(count);
        std::size_t have = 0;
        while (have < count) {
            pollfd line{master_.get(), POLLIN, 0};
            if (poll(&line, 1, 10'000) <= 0) {
                break;
            }
            ssize_t const got = ::read(master_.get(), bytes.data() + have, count - have);
            if (got <= 0) {
                break;
            }
            have += static_cast<std::size_t>(got);
        }
        bytes.resize(have);
        return bytes;
    }

    /** Closes the other side, as if a cable were pulled out. */
    void hangUp() { master_.close(); }

private:
    base::FileDescriptor master_;
    std::string path_;
};

} // namespace hosttest
