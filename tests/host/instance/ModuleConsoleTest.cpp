#include "host/instance/ModuleConsole.h"

#include "tests/host/FakeProtocol.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

using Kind = host::ConsoleReply::Kind;

class ModuleConsole : public testing::Test {
protected:
    host::ConsoleReply run(std::string const& line, std::optional<std::string> reply) {
        module.consoleReply = std::move(reply);
        return host::runConsoleLine(module, line);
    }

    FakeProtocol module;
};

TEST_F(ModuleConsole, OnlyReadAndWriteAskThePlc) {
    EXPECT_TRUE(host::asksPlc("read 1?x?M?0?int"));
    EXPECT_TRUE(host::asksPlc("write"));
    EXPECT_FALSE(host::asksPlc("readme"));
    EXPECT_FALSE(host::asksPlc("lasterror"));
}

TEST_F(ModuleConsole, AnAnswerHasWholeLines) {
    host::ConsoleReply const reply = run("lasterror", "Timeout on Acknowledge");
    EXPECT_EQ(reply.kind, Kind::Answer);
    EXPECT_EQ(reply.text, "Timeout on Acknowledge\n");
    EXPECT_EQ(run("read 1?x?M?0?int", "2A00\n").kind, Kind::Answer);
    EXPECT_EQ(run("deletetags", "").text, "");
}

TEST_F(ModuleConsole, AReplyOfThePlcWithoutAnEndOfLineIsAFailure) {
    EXPECT_EQ(run("read 1?x?M?0?int", "Timeout on Acknowledge").kind, Kind::DriverFailed);
    EXPECT_EQ(run("write 1?x?M?0?int 00", "").kind, Kind::DriverFailed);
}

TEST_F(ModuleConsole, AComplaintIsAboutTheLine) {
    EXPECT_EQ(run("read", "error: missing parameter (URI string)\n").kind, Kind::Complaint);
    EXPECT_EQ(run("lasterror", "error: of another kind\n").kind, Kind::Answer) << "a text of an earlier failure";
}

TEST_F(ModuleConsole, AnUnknownWordHasNoReply) {
    host::ConsoleReply const reply = run("nonsense", std::nullopt);
    EXPECT_EQ(reply.kind, Kind::UnknownCommand);
    EXPECT_EQ(reply.text, "");
}

} // namespace
} // namespace hosttest
