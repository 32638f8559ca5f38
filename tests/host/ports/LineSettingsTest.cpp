#include "host/ports/LineSettings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

namespace hosttest {
namespace {

host::LineSettings good(int baud, int parity, int dataBits, int stopBits) {
    auto const settings = host::lineSettings(baud, parity, dataBits, stopBits);
    EXPECT_TRUE(settings.ok());
    return settings.ok() ? settings.value() : host::LineSettings{};
}

std::string refusal(int baud, int parity, int dataBits, int stopBits) {
    auto const settings = host::lineSettings(baud, parity, dataBits, stopBits);
    return settings.ok() ? "accepted" : settings.failure().text;
}

TEST(LineSettings, EveryStandardRateHasItsOwnConstant) {
    std::vector<std::pair<int, speed_t>> const rates = {
        {300, B300},         {600, B600},         {1200, B1200},       {2400, B2400},       {4800, B4800},
        {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},     {115200, B115200},
        {230400, B230400},   {460800, B460800},   {500000, B500000},   {576000, B576000},   {921600, B921600},
        {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000},
        {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000}, {50, B50},           {75, B75},
        {110, B110},         {150, B150},         {200, B200},         {1800, B1800}};
    for (auto const& [baud, speed] : rates) {
        EXPECT_EQ(good(baud, 0, 8, 1).speed, speed) << baud;
    }
}

TEST(LineSettings, AnyOtherRateIsRefusedAndNeverBecomesAnother) {
    for (int const baud : {0, -1, 1, 134, 9601, 12345, 19201, 128000, 5000000, 2147483647}) {
        EXPECT_EQ(refusal(baud, 0, 8, 1), "a serial line cannot run at " + std::to_string(baud) +
                                              " bit/s, only at a standard rate such as 9600, 19200, 38400, 57600 or "
                                              "115200");
    }
}

TEST(LineSettings, ParityNumbersAreNoneEvenOddMark) {
    EXPECT_EQ(good(9600, 0, 8, 1).characters, tcflag_t{CS8});
    EXPECT_EQ(good(9600, 1, 8, 1).characters, tcflag_t{CS8 | PARENB});
    EXPECT_EQ(good(9600, 2, 8, 1).characters, tcflag_t{CS8 | PARENB | PARODD});
    EXPECT_EQ(good(9600, 3, 8, 1).characters, CS8 | PARENB | PARODD | CMSPAR);
    EXPECT_EQ(refusal(9600, 4, 8, 1),
              "a serial line cannot have 4 as its parity, only 0 (none), 1 (even), 2 (odd) or 3 (mark)");
    EXPECT_EQ(refusal(9600, -1, 8, 1),
              "a serial line cannot have -1 as its parity, only 0 (none), 1 (even), 2 (odd) or 3 (mark)");
}

TEST(LineSettings, SevenOrEightDataBitsAndOneOrTwoStopBits) {
    EXPECT_EQ(good(9600, 1, 7, 1).characters, tcflag_t{CS7 | PARENB});
    EXPECT_EQ(good(9600, 0, 8, 2).characters, tcflag_t{CS8 | CSTOPB});
    EXPECT_EQ(refusal(9600, 0, 6, 1), "a serial line cannot have 6 data bits, only 7 or 8");
    EXPECT_EQ(refusal(9600, 0, 8, 3), "a serial line cannot have 3 stop bits, only 1 or 2");
    EXPECT_EQ(refusal(9600, 0, 8, 0), "a serial line cannot have 0 stop bits, only 1 or 2");
}

TEST(LineSettings, TimeOfAByteCountsStartParityAndStopBits) {
    EXPECT_EQ(good(1000000, 0, 8, 1).nanosecondsPerByte(), 10'000);
    EXPECT_EQ(good(1000000, 1, 8, 2).nanosecondsPerByte(), 12'000);
    EXPECT_EQ(good(9600, 0, 8, 1).nanosecondsPerByte(), 1'041'666);
}

TEST(LineSettings, RawModeTurnsEveryTranslationOff) {
    termios before{};
    std::memset(&before, 0xFF, sizeof before);
    termios const raw = host::rawTermios(before, good(19200, 1, 8, 2));
    EXPECT_EQ(raw.c_iflag, 0U);
    EXPECT_EQ(raw.c_oflag, 0U);
    EXPECT_EQ(raw.c_lflag, 0U);
    EXPECT_EQ(raw.c_cc[VMIN], 0);
    EXPECT_EQ(raw.c_cc[VTIME], 0);
    EXPECT_EQ(raw.c_cflag & ~tcflag_t{CBAUD | CBAUDEX}, tcflag_t{CREAD | CLOCAL | CS8 | PARENB | CSTOPB})
        << "no hardware flow control, no hang-up on closing";
    EXPECT_EQ(cfgetospeed(&raw), speed_t{B19200});
    EXPECT_EQ(cfgetispeed(&raw), speed_t{B19200});
}

class RefusedSetting : public testing::Test {
protected:
    termios const wanted = host::rawTermios(termios{}, good(19200, 3, 8, 2));
    termios actual = wanted;
    std::string refused() const { return host::refusedSetting(wanted, actual, false); }
};

TEST_F(RefusedSetting, IsNoneWhenAllWereTakenOver) {
    EXPECT_EQ(refused(), "");
}

TEST_F(RefusedSetting, NamesTheRate) {
    cfsetospeed(&actual, B9600);
    cfsetispeed(&actual, B9600);
    EXPECT_EQ(refused(), "the bit rate");
}

TEST_F(RefusedSetting, NamesAMarkParityThatBecameAnOddOne) {
    actual.c_cflag &= ~tcflag_t{CMSPAR};
    EXPECT_EQ(refused(), "the parity");
}

TEST_F(RefusedSetting, NamesDataAndStopBits) {
    actual.c_cflag &= ~tcflag_t{CSTOPB};
    EXPECT_EQ(refused(), "the stop bits");
    actual.c_cflag = (actual.c_cflag & ~tcflag_t{CSIZE}) | CS7;
    EXPECT_EQ(refused(), "the data bits");
}

TEST_F(RefusedSetting, NoticesATranslationThatStayedOn) {
    actual.c_iflag |= ICRNL;
    EXPECT_EQ(refused(), "raw mode");
    actual = wanted;
    actual.c_lflag |= ECHO;
    EXPECT_EQ(refused(), "raw mode");
    actual = wanted;
    actual.c_cflag |= CRTSCTS;
    EXPECT_EQ(refused(), "raw mode");
}

TEST_F(RefusedSetting, ParityAndDataBitsDoNotCountOnAPseudoTerminal) {
    actual.c_cflag &= ~tcflag_t{PARENB | PARODD | CMSPAR};
    EXPECT_EQ(host::refusedSetting(wanted, actual, true), "");
    actual.c_cflag &= ~tcflag_t{CSTOPB};
    EXPECT_EQ(host::refusedSetting(wanted, actual, true), "the stop bits");
}

} // namespace
} // namespace hosttest
