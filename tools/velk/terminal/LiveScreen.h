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

/** Lines at the end of what a terminal shows, which are drawn again and again in the same place. */
class LiveScreen {
public:
    /** What to print so that @p lines stand there, and nothing of the last ones. */
    std::string redraw(std::vector<std::string> const& lines, ScreenSize size);

    /** What to print so that the lines are gone, and what is printed next stands in their place. */
    std::string erase(ScreenSize size);

    /** Somebody else has printed: where the lines stand now is not known. */
    void spoil() { spoilt_ = true; }

private:
    std::size_t shown_ = 0; ///< lines
    ScreenSize size_;
    bool spoilt_ = false;
};

} // namespace velk
