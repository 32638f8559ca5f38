#include "tools/velk/commands/simulate/StreamWriter.h"

#include "base/FileDescriptor.h"
#include "plc/ports/PseudoTerminal.h"
#include "tools/velk/context/CommandError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using velk::simulation::StreamWriter;

constexpr StreamWriter::Patience kNone{.standstill = 0ms, .altogether = 0ms};

/** Everything that is there to be read. */
std::string ReadAll(int descriptor) {
    std::array<char, 65'536> bytes{};
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    ssize_t const count = ::read(descriptor, bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(0, count))};
}

/** A pipe that holds 4 KiB. */
struct SmallPipe {
    SmallPipe() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::fcntl(ends[1], F_SETPIPE_SZ, 4096), 4096);
        reading = base::FileDescriptor(ends[0]);
        writing = base::FileDescriptor(ends[1]);
    }

    base::FileDescriptor reading;
    base::FileDescriptor writing;
};

TEST(StreamWriter, WritesWhatAReaderTakes) {
    SmallPipe const pipe;
    StreamWriter writer(pipe.writing.get());
    writer.put("a\n");
    EXPECT_TRUE(writer.isPending());
    EXPECT_TRUE(writer.write());
    EXPECT_FALSE(writer.isPending());
    writer.put("b\n");
    EXPECT_EQ(writer.finish({.standstill = 60s, .altogether = 60s}), 0U);
    EXPECT_EQ(ReadAll(pipe.reading.get()), "a\nb\n");
}

TEST(StreamWriter, DoesNotWaitForAReader) {
    SmallPipe const pipe;
    StreamWriter writer(pipe.writing.get());
    writer.put(std::string(4'095, 'x') + "\n"); // as much as the pipe takes
    writer.put("second\nthird\n");
    EXPECT_TRUE(writer.write());
    EXPECT_TRUE(writer.isPending());
    EXPECT_FALSE(writer.write());
    EXPECT_EQ(writer.finish(kNone), 2U);
    EXPECT_EQ(ReadAll(pipe.reading.get()).size(), 4'096U);
    EXPECT_TRUE(writer.write());
    EXPECT_FALSE(writer.isPending());
    EXPECT_EQ(ReadAll(pipe.reading.get()), "second\nthird\n");
}

TEST(StreamWriter, LeavesTheModeOfTheStreamAlone) {
    SmallPipe const pipe;
    StreamWriter const writer(pipe.writing.get());
    EXPECT_EQ(::fcntl(pipe.writing.get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST(StreamWriter, DoesNotWaitForATerminalThatIsNotRead) {
    plc::PseudoTerminal const terminal;
    base::FileDescriptor const slave =
        base::openedOrThrow(::open(terminal.slaveName().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), terminal.slaveName());
    StreamWriter writer(slave.get());
    writer.put(std::string(1'000'000, 'x'));
    EXPECT_TRUE(writer.write());
    EXPECT_TRUE(writer.isPending());
    while (writer.write()) { // the kernel may have moved some on
    }
    EXPECT_TRUE(writer.isPending());
}

TEST(StreamWriter, WritesToASocketThatCannotBeOpenedAgain) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    base::FileDescriptor const reading(ends[0]);
    base::FileDescriptor const writing(ends[1]);
    StreamWriter writer(writing.get());
    writer.put("a\n");
    EXPECT_TRUE(writer.write());
    EXPECT_EQ(ReadAll(reading.get()), "a\n");
}

TEST(StreamWriter, SaysThatNobodyReadsAnyMore) {
    std::signal(SIGPIPE, SIG_IGN);
    SmallPipe pipe;
    StreamWriter writer(pipe.writing.get());
    pipe.reading.close();
    writer.put("a\n");
    try {
        writer.write();
        ADD_FAILURE() << "nobody can read it";
    } catch (velk::CommandError const& error) {
        EXPECT_EQ(error.code(), velk::ExitCode::ItemNotGood);
        EXPECT_STREQ(error.what(), "standard output cannot be written: Broken pipe");
    }
    EXPECT_THROW(writer.finish({.standstill = 60s, .altogether = 60s}), velk::CommandError);
}

TEST(StreamWriter, ForgetsWhatNobodyReadsWhenItIsToldSo) {
    std::signal(SIGPIPE, SIG_IGN);
    SmallPipe pipe;
    StreamWriter writer(pipe.writing.get(), StreamWriter::OnFailure::Forget);
    pipe.reading.close();
    writer.put("a\n");
    EXPECT_FALSE(writer.write());
    EXPECT_FALSE(writer.isPending()) << "or it would be tried again and again";
}

} // namespace
