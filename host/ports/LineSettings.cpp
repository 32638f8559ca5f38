#include "host/ports/LineSettings.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

struct Rate {
    int baud;
    speed_t speed;
};

// B134 is omitted: it means 134.5 bit/s.
constexpr std::array kRates = {
    Rate{50, B50},           Rate{75, B75},           Rate{110, B110},         Rate{150, B150},
    Rate{200, B200},         Rate{300, B300},         Rate{600, B600},         Rate{1200, B1200},
    Rate{1800, B1800},       Rate{2400, B2400},       Rate{4800, B4800},       Rate{9600, B9600},
    Rate{19200, B19200},     Rate{38400, B38400},     Rate{57600, B57600},     Rate{115200, B115200},
    Rate{230400, B230400},   Rate{460800, B460800},   Rate{500000, B500000},   Rate{576000, B576000},
    Rate{921600, B921600},   Rate{1000000, B1000000}, Rate{1152000, B1152000}, Rate{1500000, B1500000},
    Rate{2000000, B2000000}, Rate{2500000, B2500000}, Rate{3000000, B3000000}, Rate{3500000, B3500000},
    Rate{4000000, B4000000},
};

// Indexed by the parity number: none, even, odd, mark.
constexpr std::array<tcflag_t, 4> kParities = {0, PARENB, PARENB | PARODD, PARENB | PARODD | CMSPAR};

constexpr tcflag_t kParityBits = PARENB | PARODD | CMSPAR;

base::Failure refused(char const* what, int value, char const* choice) {
    return base::Failure{base::FailureKind::PortSettings,
                         "a serial line cannot have " + std::to_string(value) + " " + what + ", only " + choice};
}

} // namespace

std::int64_t LineSettings::nanosecondsPerByte() const {
    return baud > 0 ? std::int64_t{1'000'000'000} * bitsPerCharacter / baud : 0;
}

base::Result<LineSettings> lineSettings(int baud, int parity, int dataBits, int stopBits) {
    auto const* const rate =
        std::find_if(kRates.begin(), kRates.end(), [baud](Rate const& known) { return known.baud == baud; });
    if (rate == kRates.end()) {
        return base::Failure{base::FailureKind::PortSettings,
                             "a serial line cannot run at " + std::to_string(baud) +
                                 " bit/s, only at a standard rate such as 9600, 19200, 38400, 57600 or 115200"};
    }
    if (parity < 0 || parity >= static_cast<int>(kParities.size())) {
        return refused("as its parity", parity, "0 (none), 1 (even), 2 (odd) or 3 (mark)");
    }
    if (dataBits != 7 && dataBits != 8) {
        return refused("data bits", dataBits, "7 or 8");
    }
    if (stopBits != 1 && stopBits != 2) {
        return refused("stop bits", stopBits, "1 or 2");
    }
    LineSettings settings;
    settings.baud = baud;
    settings.speed = rate->speed;
    settings.characters = (dataBits == 7 ? CS7 : CS8) | kParities.at(static_cast<std::size_t>(parity));
    settings.characters |= stopBits == 2 ? tcflag_t{CSTOPB} : 0;
    settings.bitsPerCharacter = 1 + dataBits + (parity != 0 ? 1 : 0) + stopBits;
    return settings;
}

termios rawTermios(termios current, LineSettings const& settings) {
    current.c_iflag = 0; // no parity marking, no stripping, no CR/NL translation, no XON/XOFF
    current.c_oflag = 0;
    current.c_lflag = 0;
    // CLOCAL: no modem lines. Without HUPCL DTR stays as it is after closing, so that a converter powered by this
    // signal does not lose its supply between two programs.
    current.c_cflag = CREAD | CLOCAL | settings.characters;
    std::fill(std::begin(current.c_cc), std::end(current.c_cc), cc_t{0});
    current.c_cc[VMIN] = 0;
    current.c_cc[VTIME] = 0;
    cfsetispeed(&current, settings.speed);
    cfsetospeed(&current, settings.speed);
    return current;
}

std::string refusedSetting(termios const& wanted, termios const& actual, bool pseudoTerminal) {
    auto const differs = [&](tcflag_t bits) { return ((wanted.c_cflag ^ actual.c_cflag) & bits) != 0; };
    if (cfgetospeed(&actual) != cfgetospeed(&wanted) || cfgetispeed(&actual) != cfgetispeed(&wanted)) {
        return "the bit rate";
    }
    if (!pseudoTerminal && differs(kParityBits)) {
        return "the parity";
    }
    if (!pseudoTerminal && differs(CSIZE)) {
        return "the data bits";
    }
    if (differs(CSTOPB)) {
        return "the stop bits";
    }
    if (differs(CRTSCTS | CREAD | CLOCAL) || actual.c_iflag != wanted.c_iflag || actual.c_oflag != wanted.c_oflag ||
        actual.c_lflag != wanted.c_lflag) {
        return "raw mode";
    }
    return {};
}

} // namespace host
