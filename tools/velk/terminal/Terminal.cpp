#include "tools/velk/terminal/Terminal.h"

#include "base/Signals.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/text/Fitting.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <sys/ioctl.h>
#include <unistd.h>

namespace velk {
namespace {

constexpr int kUsualWidth = 80;
constexpr int kUsualHeight = 24;
constexpr char const* kClearLine = "\r\x1b[K";

char const* sequence(Colour colour) {
    switch (colour) {
    case Colour::Red:
        return "\x1b[31m";
    case Colour::Green:
        return "\x1b[32m";
    case Colour::Yellow:
        return "\x1b[33m";
    case Colour::Cyan:
        return "\x1b[36m";
    case Colour::Bold:
        return "\x1b[1m";
    case Colour::Dim:
        return "\x1b[2m";
    case Colour::None:
        break;
    }
    return "";
}

std::string inColour(bool shown, Colour colour, std::string_view text) {
    if (!shown || colour == Colour::None || text.empty()) {
        return std::string(text);
    }
    return sequence(colour) + std::string(text) + "\x1b[0m";
}

/** Columns of the first of these that is a terminal. */
int widthOf(std::initializer_list<int> descriptors) {
    winsize size{};
    for (int const descriptor : descriptors) {
        if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
            return size.ws_col;
        }
    }
    return kUsualWidth;
}

/** A failure to write to standard error cannot be reported anywhere. */
void toError(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

} // namespace

StreamKinds StreamKinds::ofThisProcess() {
    char const* const noColour = std::getenv("NO_COLOR");
    char const* const kind = std::getenv("TERM");
    bool const dumb = kind == nullptr || std::strcmp(kind, "dumb") == 0;
    return {.inputIsTerminal = isatty(STDIN_FILENO) == 1,
            .outputIsTerminal = isatty(STDOUT_FILENO) == 1,
            .errorIsTerminal = isatty(STDERR_FILENO) == 1,
            .coloursWanted = (noColour == nullptr || *noColour == '\0') && !dumb,
            .canRedraw = !dumb};
}

int Terminal::width() const {
    return widthOf({STDOUT_FILENO, STDERR_FILENO});
}

int Terminal::height() const {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 ? size.ws_row : kUsualHeight;
}

void Terminal::out(std::string_view data) {
    clearStatus();
    bool const written = std::fwrite(data.data(), 1, data.size(), stdout) == data.size() && std::fflush(stdout) == 0;
    if (!written) {
        throw CommandError(ExitCode::ItemNotGood,
                           "standard output cannot be written: " + std::string(std::strerror(errno)));
    }
}

void Terminal::note(std::string_view line) {
    if (!quiet_) {
        clearStatus();
        toError(std::string(line) + "\n");
    }
}

void Terminal::error(std::string_view line) {
    clearStatus();
    toError(std::string(line) + "\n");
}

void Terminal::complain(std::string_view text) {
    error(colouredError(Colour::Red, "velk:") + " " + std::string(text));
}

void Terminal::status(std::string_view line) {
    if (quiet_ || !kinds_.errorIsTerminal || !kinds_.canRedraw) {
        return;
    }
    clearStatus();
    constexpr int kFree = 3; // the last column wraps on some terminals, and Ctrl-C is echoed as ^C after the line
    int const width = std::max(widthOf({STDERR_FILENO, STDOUT_FILENO}) - kFree, 0);
    toError(firstCharacters(line, static_cast<std::size_t>(width)));
    statusShown_ = !line.empty();
}

void Terminal::clearStatus() {
    if (statusShown_) {
        toError(kClearLine);
        statusShown_ = false;
    }
}

std::string Terminal::coloured(Colour colour, std::string_view text) const {
    return inColour(kinds_.outputIsTerminal && kinds_.coloursWanted, colour, text);
}

std::string Terminal::colouredError(Colour colour, std::string_view text) const {
    return inColour(kinds_.errorIsTerminal && kinds_.coloursWanted, colour, text);
}

std::optional<std::string> Terminal::ask(std::string_view question, base::Signals& interrupt) {
    clearStatus();
    toError(question);
    std::string line;
    while (interrupt.waitForInput(STDIN_FILENO)) {
        char byte = 0;
        ssize_t const count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            inputEnded_ = true;
            return line.empty() ? std::nullopt : std::optional(line);
        }
        if (byte == '\n') {
            return line;
        }
        line += byte;
    }
    toError("\n");
    throw CommandError(ExitCode::Interrupted, "interrupted");
}

} // namespace velk
