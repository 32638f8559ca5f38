#include "base/FileDescriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

using base::FileDescriptor;

bool isOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) != -1;
}

TEST(FileDescriptor, IsClosedByTheLastOwner) {
    int number = -1;
    {
        FileDescriptor first(open("/dev/null", O_RDONLY | O_CLOEXEC));
        number = first.get();
        FileDescriptor second(std::move(first));
        FileDescriptor third;
        EXPECT_FALSE(third.isOpen());
        third = std::move(second);
        EXPECT_EQ(third.get(), number);
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptor, OfWhatCouldNotBeOpenedIsAnErrorOfTheSystem) {
    try {
        static_cast<void>(base::openedOrThrow(open("/dev/null/none", O_RDONLY | O_CLOEXEC), "the port"));
        FAIL() << "there is no such file";
    } catch (std::system_error const& error) {
        EXPECT_STREQ(error.what(), "the port: Not a directory");
        EXPECT_EQ(error.code(), std::errc::not_a_directory);
    }
    EXPECT_TRUE(base::openedOrThrow(open("/dev/null", O_RDONLY | O_CLOEXEC), "null").isOpen());
}

} // namespace
