#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velk {

struct ScreenSize {
    std::size_t columns = 80;
    std::size_t rows = 24;

    bool operator==(ScreenSize const&) const = default;
};

/** Lines at the bottom of a terminal's output that are redrawn in the same place. */
class LiveScreen {
public:
    /** What to print to replace the last lines by @p lines. */
    std::string redraw(std::vector<std::string> const& lines, ScreenSize size);

    /** What to print to remove the lines, so that the next output takes their place. */
    std::string erase(ScreenSize size);

    /** Other output was printed: where the lines are now is unknown. */
    void spoil() { spoilt_ = true; }

private:
    std::size_t shown_ = 0; ///< lines
    ScreenSize size_;
    bool spoilt_ = false;
};

} // namespace velk
