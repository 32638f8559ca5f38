#include "tools/demo/Screen.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace demo {
namespace {

constexpr char const* kBold = "1";
constexpr char const* kGreen = "32";
constexpr char const* kRed = "31";

std::string describe(tools::Upload const& upload) {
    char text[120];
    std::snprintf(text, sizeof text, "  symbol file: %llu bytes in %llu pieces, %.1f kB/s",
                  static_cast<unsigned long long>(upload.bytes), static_cast<unsigned long long>(upload.pieces),
                  upload.rate() / 1'000);
    return text;
}

} // namespace

Screen::Screen() : terminal_(isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

std::string Screen::coloured(char const* colour, std::string const& text) const {
    return terminal_ ? std::string("\x1B[") + colour + "m" + text + "\x1B[0m" : text;
}

void Screen::title(std::string const& text) {
    std::printf("%s\n", coloured(kBold, text).c_str());
}

void Screen::step(std::string const& text) {
    std::printf("\n%s\n", coloured(kBold, std::to_string(++steps_) + ". " + text).c_str());
}

void Screen::say(std::string const& text) {
    std::printf("  %s\n", text.c_str());
}

void Screen::print(std::string const& lines) {
    std::fputs(lines.c_str(), stdout);
}

void Screen::good(std::string const& text) {
    say(coloured(kGreen, "ok") + "  " + text);
}

void Screen::bad(std::string const& text) {
    say(coloured(kRed, "!!") + "  " + text);
}

void Screen::progress(tools::Upload const& upload) {
    if (upload.done) {
        std::printf("%s%s\n", terminal_ ? "\r\x1B[K" : "", describe(upload).c_str());
    } else if (terminal_) {
        std::printf("\r\x1B[K%s ...", describe(upload).c_str());
        std::fflush(stdout);
    }
}

} // namespace demo
