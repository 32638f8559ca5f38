#pragma once

#include "tools/velk/line/Readings.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velk {

class Terminal;

/** What is shown of one watched variable. */
struct WatchedItem {
    std::string station;
    std::string name;
    std::string type;
    std::string value = "-"; ///< the last good one
    std::string status = "-";
    std::string reason;   ///< why it is not good
    bool changed = false; ///< in the last round
    bool good = false;    ///< in the last round
    std::chrono::system_clock::time_point goodAt{};
};

/** The state of the line, for the lines above the table. */
struct WatchHeader {
    std::uint64_t rounds = 0;
    double roundMs = 0; ///< duration of the last round
    double floorMs = 0; ///< shortest possible duration on this line
    std::uint64_t failures = 0;
    std::string trouble; ///< what is wrong with the line now; empty for nothing
};

/** The live table of watched variables. Uses neither a clock nor a terminal. */
class WatchTable {
public:
    /** Stores the results of a round. A variable keeps its last good value as long as it is among the readings. */
    void update(std::span<Reading const> readings);

    /**
     * Lines without their ends, at most @p height of them, each at most @p width characters without colours. What is
     * not good is visible without colours, too; the reasons are below the table as far as there is room.
     */
    [[nodiscard]] std::vector<std::string> lines(WatchHeader const& header, std::chrono::system_clock::time_point now,
                                                 std::size_t width, std::size_t height, Terminal const& terminal) const;

    [[nodiscard]] std::vector<WatchedItem> const& items() const { return items_; }

private:
    /** Station and name. */
    using Key = std::pair<int, std::string>;

    void update(WatchedItem& item, Reading const& reading) const;
    [[nodiscard]] bool severalStations() const;
    [[nodiscard]] std::string headerLine(WatchHeader const& header) const;
    [[nodiscard]] std::vector<std::string> reasonLines(std::string const& told) const;

    std::vector<WatchedItem> items_;
    std::map<Key, std::size_t> places_; ///< indexes of the items
};

/** "0.4 s", "12 s", "3 min", "2 h". */
std::string ageText(std::chrono::system_clock::duration age);

} // namespace velk
