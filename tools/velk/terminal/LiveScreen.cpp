#include "tools/velk/terminal/LiveScreen.h"

#include <fmt/format.h>

namespace velk {
namespace {

constexpr char const* kClearScreen = "\x1B[H\x1B[2J";
constexpr char const* kClearRestOfLine = "\x1B[K";
constexpr char const* kClearBelow = "\x1B[J";

} // namespace

std::string LiveScreen::erase(ScreenSize size) {
    std::string text;
    if (shown_ > 0) {
        // Terminals treat lines differently when their size changes, so the old lines are left alone.
        text = spoilt_ || size != size_ ? kClearScreen : fmt::format("\x1B[{}A", shown_) + kClearBelow;
    }
    shown_ = 0;
    spoilt_ = false;
    return text;
}

std::string LiveScreen::redraw(std::vector<std::string> const& lines, ScreenSize size) {
    bool const inPlace = shown_ > 0 && !spoilt_ && size == size_;
    std::string text = inPlace ? fmt::format("\x1B[{}A", shown_) : erase(size); // in place it does not flicker
    for (std::string const& line : lines) {
        text += line + kClearRestOfLine + "\n";
    }
    shown_ = lines.size();
    size_ = size;
    return text + kClearBelow;
}

} // namespace velk
