#include "plc/station/Services.h"

#include "tests/plc/Panel.h"

#include <gtest/gtest.h>

namespace {

using plc::ByteOrder;
using plc::Cause;
using plctest::Hex;
using plctest::Show;
using plctest::operator+;
using velktest::Text;

constexpr std::string_view kLittleLogin = "01 02 00 00 00 06 00 00 00 00 00 00 00 00";
constexpr std::string_view kBigLogin = "01 00 00 00 02 00 00 00 06 00 00 00 00 00";

/** The services alone, payload in, payload out. */
class ServicesOf : public testing::Test {
protected:
    explicit ServicesOf(ByteOrder order)
        : reporter(&recorder, 1), faults(1, {}, {reporter, 0}), program(loadProgram(Description(), order)),
          services({.order = order, .filePieceSize = 100}, program, faults, {reporter, 0}) {}

    static plc::ProgramDescription Description() {
        plc::ProgramDescription description;
        description.projectId = 0x12345678;
        description.areaSizes = {16, 4, 4, 0, 0, 2};
        return description;
    }

    std::string ask(plc::Bytes const& request) {
        auto const reply = services.handle(request);
        return reply ? Show(*reply) : "silence";
    }
    std::string ask(std::string_view hex) { return ask(Hex(hex)); }
    [[nodiscard]] plc::Cause lastCause() const { return recorder.events.back().cause; }

    plctest::Recorder recorder;
    plc::EventReporter reporter;
    plc::FaultPlan faults;
    plc::LoadedProgram program;
    plc::Services services;
};

class LittleServices : public ServicesOf {
protected:
    LittleServices() : ServicesOf(ByteOrder::kLittle) {}
};

class LoggedInLittle : public LittleServices {
protected:
    LoggedInLittle() { ask(kLittleLogin); }
};

class LoggedInBig : public ServicesOf {
protected:
    LoggedInBig() : ServicesOf(ByteOrder::kBig) { ask(kBigLogin); }
};

TEST_F(LittleServices, LinkCheckWantsItsNineBytes) {
    EXPECT_EQ(ask("42 E0 20 26 29 00 00 5D 05"), "00 00");
    EXPECT_EQ(lastCause(), Cause::kLinkChecked);
    for (char const* const wrong :
         {"42 E0 20 26 29 00 00 5D", "42 E0 20 26 29 00 00 5D 05 00", "42 E0 20 26 29 00 00 5D 06", "42"}) {
        EXPECT_EQ(ask(wrong), "silence") << wrong;
        EXPECT_EQ(lastCause(), Cause::kLinkCheckBytes) << wrong;
    }
}

TEST_F(LittleServices, LoginIsAcceptedWithItsTwoNumbers) {
    EXPECT_EQ(ask(kLittleLogin), "E8 03");
    EXPECT_TRUE(services.loggedIn());
    EXPECT_EQ(ask(kLittleLogin), "E8 03");
}

TEST_F(LittleServices, LoginWithAnythingElseIsRefused) {
    for (char const* const wrong :
         {"01 03 00 00 00 06 00 00 00 00 00 00 00 00", "01 02 00 00 00 05 00 00 00 00 00 00 00 00",
          "01 02 00 00 00 06 00 00 00 00 00 00 00 01", "01 02 00 00 00 06 00 00 00 01 00 00 00 00",
          "01 02 00 00 00 06 00 00 00 00 00 00 00", "01 02 00 00 00 06 00 00 00 00 00 00 00 00 00", "01",
          "01 00 00 00 02 00 00 00 06 00 00 00 00 00"}) {
        EXPECT_EQ(ask(wrong), "01 00") << wrong;
        EXPECT_EQ(lastCause(), Cause::kLoginRequest);
        EXPECT_FALSE(services.loggedIn());
    }
}

TEST_F(LoggedInBig, NumbersAreMostSignificantByteFirst) {
    EXPECT_TRUE(services.loggedIn());
    EXPECT_EQ(ask(kBigLogin), "03 E8");
    EXPECT_EQ(ask(kLittleLogin), "00 01");
}

TEST_F(LittleServices, LogoutNeedsALoginAndNothingElse) {
    EXPECT_EQ(ask("02"), "02 00");
    EXPECT_EQ(lastCause(), Cause::kNotLoggedIn);
    ask(kLittleLogin);
    EXPECT_EQ(ask("02 00"), "03 00");
    EXPECT_EQ(lastCause(), Cause::kLogoutRequest);
    EXPECT_TRUE(services.loggedIn());
    EXPECT_EQ(ask("02"), "00 00");
    EXPECT_FALSE(services.loggedIn());
    EXPECT_EQ(ask("2E 00 00 00 00 00 78 56 34 12"), "02 00");
}

TEST_F(LittleServices, ListsAndFilesNeedALogin) {
    EXPECT_EQ(ask("2E 00 00 00 00 00 78 56 34 12"), "02 00");
    EXPECT_EQ(ask("3C 00 00 00 00 00 78 56 34 12"), "02 00");
    EXPECT_EQ(ask(Hex("31 00 0D 00") + Text("DOWNLOAD.SDB") + Hex("00")), "02 00 00 00 00 00");
    EXPECT_EQ(ask("32"), "02 00 00 00 00 00");
    EXPECT_EQ(recorder.causes(), std::vector<Cause>(4, Cause::kNotLoggedIn));
}

TEST_F(LittleServices, UnknownServiceIsRefused) {
    EXPECT_EQ(ask("7F"), "04 00");
    EXPECT_EQ(lastCause(), Cause::kUnknownService);
    EXPECT_EQ(recorder.lastText(), "there is no service 127");
    EXPECT_EQ(ask(""), "04 00");
}

TEST_F(LoggedInLittle, EmptyReadListHasAReplyOfSixBytes) {
    EXPECT_EQ(ask("2E 00 00 00 00 00 78 56 34 12"), "00 00 00 00 00 00");
    EXPECT_EQ(ask("3C 00 00 00 00 00 78 56 34 12"), "00 00");
}

TEST_F(LoggedInLittle, ReadListGivesQualityAndValueOfEachItem) {
    program.memory.area(0)[2] = 0x11;
    program.memory.area(0)[3] = 0x22;
    program.memory.area(1)[3] = 0x33;
    EXPECT_EQ(ask("2E 00 02 00 00 00"
                  "| 00 00 02 00 00 00 02 00 00 00"
                  "| 01 00 03 00 00 00 01 00 00 00"
                  "| 78 56 34 12"),
              "00 00 00 00 00 00 01 11 22 01 33");
    EXPECT_EQ(lastCause(), Cause::kListRead);
}

TEST_F(LoggedInBig, ReadListInBigEndianNumbers) {
    program.memory.area(0)[2] = 0x11;
    program.memory.area(0)[3] = 0x22;
    EXPECT_EQ(ask("2E 00 00 00 00 01 | 00 00 00 00 00 02 00 00 00 02 | 12 34 56 78"), "00 00 00 00 00 00 01 11 22");
    // The little-endian request is wrong here: its one item is read as 0x01000000 items.
    EXPECT_EQ(ask("2E 00 01 00 00 00 | 00 00 02 00 00 00 02 00 00 00 | 78 56 34 12"), "00 03");
    EXPECT_EQ(lastCause(), Cause::kListRequest);
}

TEST_F(LoggedInLittle, ReadItemOfSizeZeroIsTheByteThatHoldsTheBit) {
    program.memory.area(0)[1] = 0xA5;
    // Bit 13 of area 0 is bit 5 of byte 1.
    EXPECT_EQ(ask("2E 00 01 00 00 00 | 00 00 0D 00 00 00 00 00 00 00 | 78 56 34 12"), "00 00 00 00 00 00 01 A5");
}

TEST_F(LoggedInLittle, ReadItemBeyondItsAreaHasBadQualityAndZeros) {
    for (std::uint8_t& byte : program.memory.area(0)) {
        byte = 0xFF;
    }
    EXPECT_EQ(ask("2E 00 03 00 00 00"
                  "| 00 00 0F 00 00 00 02 00 00 00" // half beyond the end
                  "| 00 00 80 00 00 00 00 00 00 00" // bit 128 of 16 bytes
                  "| 00 00 0E 00 00 00 02 00 00 00" // the last two bytes
                  "| 78 56 34 12"),
              "00 00 00 00 00 00 00 00 00 00 00 01 FF FF");
    EXPECT_EQ(recorder.events[1].cause, Cause::kNoSuchMemory);
    EXPECT_EQ(recorder.events[1].text, "no memory to read: area 0, offset 15, 2 bytes");
    EXPECT_EQ(recorder.events[2].text, "no memory to read: area 0, offset 128, one bit");
}

TEST_F(LoggedInLittle, ReadItemInNoAreaHasBadQuality) {
    EXPECT_EQ(ask("2E 00 02 00 00 00"
                  "| 06 00 00 00 00 00 01 00 00 00"
                  "| 00 00 FF FF FF FF 02 00 00 00"
                  "| 78 56 34 12"),
              "00 00 00 00 00 00 00 00 00 00 00");
    // An area without memory.
    EXPECT_EQ(ask("2E 00 01 00 00 00 | 03 00 00 00 00 00 01 00 00 00 | 78 56 34 12"), "00 00 00 00 00 00 00 00");
}

TEST_F(LoggedInLittle, ReadListWhoseReplyWouldBeTooLongIsRefused) {
    // 6 + 1 + 74,993 = 75,000 bytes fit, one more does not.
    std::string const most = ask("2E 00 01 00 00 00 | 00 00 00 00 00 00 F1 24 01 00 | 78 56 34 12");
    EXPECT_EQ(most.size(), 75'000U * 3 - 1);
    EXPECT_EQ(ask("2E 00 01 00 00 00 | 00 00 00 00 00 00 F2 24 01 00 | 78 56 34 12"), "08 00");
    EXPECT_EQ(lastCause(), Cause::kReplyTooLong);
    EXPECT_EQ(ask("2E 00 01 00 00 00 | 00 00 00 00 00 00 FF FF FF FF | 78 56 34 12"), "08 00");
}

TEST_F(LoggedInLittle, ListOfAnotherLengthThanItsCountIsRefused) {
    for (char const* const wrong :
         {"2E", "2E 00 00 00 00 00 78 56 34", "2E 00 00 00 00 00 00 78 56 34 12", "2E 00 01 00 00 00 78 56 34 12",
          "2E 00 01 00 00 00 | 00 00 00 00 00 00 01 00 00 | 78 56 34 12",
          "2E 00 00 00 00 00 | 00 00 00 00 00 00 01 00 00 00 | 78 56 34 12",
          "2E 00 FF FF FF FF | 00 00 00 00 00 00 01 00 00 00 | 78 56 34 12", "2E 01 00 00 00 00 78 56 34 12",
          "3C 00 01 00 00 00 | 00 00 00 00 00 00 02 00 00 00 | 11 | 78 56 34 12",
          "3C 00 01 00 00 00 | 00 00 00 00 00 00 01 00 00 00 | 11 22 | 78 56 34 12",
          "3C 00 01 00 00 00 | 00 00 00 00 00 00 00 00 00 00 | 78 56 34 12"}) {
        EXPECT_EQ(ask(wrong), "03 00") << wrong;
        EXPECT_EQ(lastCause(), Cause::kListRequest) << wrong;
    }
    EXPECT_EQ(ask("2E 07 00 00 00 00 78 56 34 12"), "03 00");
    EXPECT_EQ(recorder.lastText(), "byte 1 of a list request is 7 instead of 0");
}

TEST_F(LoggedInLittle, WriteListStoresBytesAndBits) {
    program.memory.area(0)[1] = 0x0F;
    program.memory.area(0)[2] = 0xF0;
    EXPECT_EQ(ask("3C 00 03 00 00 00"
                  "| 00 00 04 00 00 00 02 00 00 00 | 11 22"
                  "| 00 00 0D 00 00 00 00 00 00 00 | FF" // bit 13: only bit 5 of byte 1 is written
                  "| 00 00 15 00 00 00 00 00 00 00 | DF" // bit 21: bit 5 of byte 2, which is 0
                  "| 78 56 34 12"),
              "00 00");
    EXPECT_EQ(Show(program.memory.area(0)), "00 2F D0 00 11 22 00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(lastCause(), Cause::kListWritten);
}

TEST_F(LoggedInBig, WriteListInBigEndianNumbers) {
    EXPECT_EQ(ask("3C 00 00 00 00 01 | 00 01 00 00 00 01 00 00 00 02 | 11 22 | 12 34 56 78"), "00 00");
    EXPECT_EQ(Show(program.memory.area(1)), "00 11 22 00");
}

TEST_F(LoggedInLittle, WriteListWithOneItemBeyondItsAreaWritesNothing) {
    EXPECT_EQ(ask("3C 00 02 00 00 00"
                  "| 00 00 00 00 00 00 01 00 00 00 | 11"
                  "| 05 00 01 00 00 00 02 00 00 00 | 22 33"
                  "| 78 56 34 12"),
              "05 00");
    EXPECT_EQ(lastCause(), Cause::kNoSuchMemory);
    EXPECT_EQ(program.memory.area(0)[0], 0);
}

TEST_F(LoggedInLittle, AnotherProjectIdentifierGetsTheMismatchWord) {
    EXPECT_EQ(ask("2E 00 00 00 00 00 79 56 34 12"), "48 00");
    EXPECT_EQ(lastCause(), Cause::kProjectMismatch);
    EXPECT_EQ(ask("3C 00 01 00 00 00 | 00 00 00 00 00 00 01 00 00 00 | 11 | 00 00 00 00"), "48 00");
    EXPECT_EQ(program.memory.area(0)[0], 0);
}

TEST(Services, TheMismatchWordCanBeTheOtherOne) {
    plctest::Recorder recorder;
    plc::EventReporter reporter(&recorder, 1);
    plc::FaultPlan faults(1, {}, {reporter, 0});
    plc::LoadedProgram program = loadProgram({}, ByteOrder::kBig);
    plc::Services services({.order = ByteOrder::kBig, .filePieceSize = 1, .mismatchWord = 0x33}, program, faults,
                           {reporter, 0});
    ASSERT_TRUE(services.handle(Hex(kBigLogin)));
    EXPECT_EQ(Show(services.handle(Hex("2E 00 00 00 00 00 00 00 00 00")).value()), "00 33");
}

TEST_F(LoggedInLittle, FileIsReadInPieces) {
    program.symbolFile = velktest::Counting(250);
    plc::Bytes const open = Hex("31 00 0D 00") + Text("DOWNLOAD.SDB") + Hex("00");
    ASSERT_EQ(open.size(), 17U);
    EXPECT_EQ(ask(open), Show(Hex("00 00 01 00 64 00") + velktest::Counting(100)));
    EXPECT_EQ(ask("32"), Show(Hex("00 00 01 00 64 00") + velktest::Counting(100, 100)));
    EXPECT_EQ(ask("32"), Show(Hex("00 00 00 00 32 00") + velktest::Counting(50, 200)));
    EXPECT_EQ(ask("32"), "07 00 00 00 00 00");
    EXPECT_EQ(lastCause(), Cause::kNoOpenFile);
}

TEST_F(LoggedInLittle, LastPieceMayBeFull) {
    program.symbolFile = velktest::Counting(100);
    EXPECT_EQ(ask(Hex("31 00 0D 00") + Text("DOWNLOAD.SDB") + Hex("00")),
              Show(Hex("00 00 00 00 64 00") + velktest::Counting(100)));
}

TEST_F(LoggedInBig, FileRequestInBigEndianNumbers) {
    program.symbolFile = velktest::Counting(101);
    EXPECT_EQ(ask(Hex("31 00 00 0D") + Text("DOWNLOAD.SDB") + Hex("00")),
              Show(Hex("00 00 00 01 00 64") + velktest::Counting(100)));
    EXPECT_EQ(ask("32"), "00 00 00 00 00 01 64");
    EXPECT_EQ(ask(Hex("31 00 0D 00") + Text("DOWNLOAD.SDB") + Hex("00")), "00 03 00 00 00 00");
}

TEST_F(LoggedInLittle, WrongFileRequestIsRefused) {
    plc::Bytes const name = Text("DOWNLOAD.SDB");
    for (plc::Bytes const& wrong :
         {Hex("31 01 0D 00") + name + Hex("00"), Hex("31 00 0C 00") + name + Hex("00"),
          Hex("31 00 0E 00") + name + Hex("00"), Hex("31 00 0C 00") + name, Hex("31 00 0D 00") + name + Hex("01"),
          Hex("31 00 0E 00") + name + Hex("00 00"), Hex("31 00 01 00 00"), Hex("31 00 00 00"), Hex("31")}) {
        EXPECT_EQ(ask(wrong), "03 00 00 00 00 00") << Show(wrong);
        EXPECT_EQ(lastCause(), Cause::kFileRequest);
    }
    EXPECT_EQ(ask("32 00"), "03 00 00 00 00 00");
    EXPECT_EQ(lastCause(), Cause::kFileRequest);
}

TEST_F(LoggedInLittle, UnknownFileIsRefused) {
    EXPECT_EQ(ask(Hex("31 00 0D 00") + Text("download.sdb") + Hex("00")), "06 00 00 00 00 00");
    EXPECT_EQ(lastCause(), Cause::kNoSuchFile);
    EXPECT_EQ(recorder.lastText(), "there is no file download.sdb");
}

TEST_F(LoggedInLittle, RestartLosesLoginAndFile) {
    program.symbolFile = velktest::Counting(250);
    ask(Hex("31 00 0D 00") + Text("DOWNLOAD.SDB") + Hex("00"));
    services.restart();
    EXPECT_EQ(ask("32"), "02 00 00 00 00 00");
    ask(kLittleLogin);
    EXPECT_EQ(ask("32"), "07 00 00 00 00 00");
}

} // namespace
