#include "tools/velk/watch/WatchTable.h"

#include "tools/common/TextTable.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace velk {
namespace {

std::string headerLine(WatchHeader const& header) {
    return fmt::format("round {}, {:.0f} ms (least on this line: {:.0f} ms), {}", header.rounds, header.roundMs,
                       header.floorMs, counted(header.failures, "failure", "failures"));
}

/** At most @p width characters of a UTF-8 text. */
std::string cut(std::string const& text, std::size_t width) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const begins = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U;
        if (begins && ++characters > width) {
            return text.substr(0, i);
        }
    }
    return text;
}

std::vector<std::string> split(std::string const& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

/** The cells of a row, with the station in front where there are several. */
std::vector<std::string> rowOf(bool several, std::string const& station, std::vector<std::string> cells) {
    cells.front() = displayable(cells.front());
    if (several) {
        cells.insert(cells.begin(), displayable(station));
    }
    return cells;
}

Colour colourOf(WatchedItem const& item) {
    return !item.good ? Colour::Red : item.changed ? Colour::Yellow : Colour::None;
}

} // namespace

void WatchTable::update(std::span<Reading const> readings) {
    std::vector<WatchedItem> items;
    std::map<Key, std::size_t> places;
    for (Reading const& reading : readings) {
        Key const key{reading.tag->node, reading.tag->name};
        auto const before = places_.find(key);
        WatchedItem item = before == places_.end() ? WatchedItem{} : items_[before->second];
        update(item, reading);
        places.emplace(key, items.size());
        items.push_back(std::move(item));
    }
    items_ = std::move(items);
    places_ = std::move(places);
}

void WatchTable::update(WatchedItem& item, Reading const& reading) const {
    item.station = reading.tag->station;
    item.name = reading.tag->name;
    item.type = reading.tag->typeText();
    item.good = reading.result.good;
    item.status = statusWord(reading);
    item.changed = false;
    if (!item.good) {
        return;
    }
    std::string const value = reading.tag->text(reading.result.value);
    item.changed = item.goodAt.time_since_epoch().count() != 0 && value != item.value;
    item.value = value;
    item.goodAt = reading.at;
}

std::vector<std::string> WatchTable::lines(WatchHeader const& header, std::chrono::system_clock::time_point now,
                                           std::size_t width, std::size_t height, Terminal const& terminal) const {
    bool const several = std::any_of(items_.begin(), items_.end(),
                                     [&](WatchedItem const& each) { return each.station != items_.front().station; });
    tools::TextTable table(rowOf(several, "station", {"name", "type", "value", "status", "age"}));
    for (WatchedItem const& item : items_) {
        bool const seen = item.goodAt.time_since_epoch().count() != 0;
        table.add(rowOf(several, item.station,
                        {item.name, displayable(item.type), displayable(item.value), item.status,
                         seen ? ageText(now - item.goodAt) : "-"}));
    }
    constexpr std::size_t kLinesAbove = 2; // of the table's own
    std::vector<std::string> lines{cut(headerLine(header), width),
                                   terminal.coloured(Colour::Red, cut(header.trouble, width))};
    std::vector<std::string> const rows = split(table.text());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::string const row = cut(rows[i], width);
        lines.push_back(i < kLinesAbove ? row : terminal.coloured(colourOf(items_[i - kLinesAbove]), row));
    }
    if (lines.size() > height && height > 0) {
        std::size_t const hidden = lines.size() - height + 1;
        lines.resize(height - 1);
        lines.push_back(fmt::format("... and {} more", hidden));
    }
    return lines;
}

std::string ageText(std::chrono::system_clock::duration age) {
    double const seconds = std::max(std::chrono::duration<double>(age).count(), 0.0);
    constexpr double kMinute = 60;
    constexpr double kHour = 3600;
    if (seconds < 10) {
        return fmt::format("{:.1f} s", seconds);
    }
    if (seconds < 2 * kMinute) {
        return fmt::format("{:.0f} s", seconds);
    }
    return seconds < 2 * kHour ? fmt::format("{:.0f} min", seconds / kMinute)
                               : fmt::format("{:.0f} h", seconds / kHour);
}

} // namespace velk
