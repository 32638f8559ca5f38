#include "tools/velk/commands/watch/WatchTable.h"

#include "tools/velk/commands/watch/FittedRows.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Fitting.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace velk {
namespace {

using Lines = std::vector<std::string>;

/** The parts of the screen from top to bottom. */
struct Sections {
    Lines above;
    Lines heads;
    Lines rows;
    Lines reasons;
};

Colour colourOf(WatchedItem const& item) {
    return !item.good ? Colour::Red : item.changed ? Colour::Yellow : Colour::None;
}

bool wasGood(WatchedItem const& item) {
    return item.goodAt.time_since_epoch().count() != 0;
}

/** An old value is in parentheses. */
WatchRow rowOf(WatchedItem const& item, std::chrono::system_clock::time_point now) {
    WatchRow row;
    row.station = displayable(item.station);
    row.name = displayable(item.name);
    row.type = displayable(item.type);
    row.value = displayable(item.value);
    row.status = item.status;
    row.age = wasGood(item) ? ageText(now - item.goodAt) : "-";
    row.good = item.good;
    if (!item.good) {
        row.value = wasGood(item) ? "(" + row.value + ")" : "-";
        row.status = upperCase(item.status);
    }
    return row;
}

std::size_t lineCount(Sections const& sections) {
    return sections.above.size() + sections.heads.size() + sections.rows.size() + sections.reasons.size();
}

/** Drops empty lines first, then what matters less than the rows. */
void tighten(Sections& sections, std::size_t height) {
    constexpr std::size_t kLow = 12;
    constexpr std::size_t kLowest = 6;
    if (height < kLow) {
        std::erase(sections.above, "");
        sections.heads.resize(1); // without the rule
    }
    if (height < kLowest) {
        sections.heads.clear();
        sections.above.resize(std::min(sections.above.size(), height / 2));
    }
    std::erase(sections.reasons, "");
}

/** Cuts rows and reasons to the lines that are left for them; a quarter is always for reasons. */
void share(Sections& sections, std::size_t left, std::size_t width) {
    std::size_t const spare = left - std::min(left, sections.rows.size());
    sections.reasons.resize(std::min(sections.reasons.size(), std::max(spare, left / 4)));
    std::size_t const room = left - sections.reasons.size();
    if (sections.rows.size() <= room) {
        return;
    }
    std::size_t const shown = room > 1 ? room - 1 : room; // the last line counts the others, an only one does not
    std::size_t const hidden = sections.rows.size() - shown;
    sections.rows.resize(shown);
    if (room > 1) {
        sections.rows.push_back(cutAtEnd(fmt::format("... and {} more", hidden), width));
    }
}

Lines stacked(Sections sections, std::size_t width, std::size_t height) {
    if (lineCount(sections) > height) {
        tighten(sections, height);
        share(sections, height - std::min(height, sections.above.size() + sections.heads.size()), width);
    }
    Lines lines;
    for (Lines* const each : {&sections.above, &sections.heads, &sections.rows, &sections.reasons}) {
        std::move(each->begin(), each->end(), std::back_inserter(lines));
    }
    return lines;
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
    item.reason = reasonText(reading);
    item.changed = false;
    if (!item.good) {
        return;
    }
    std::string const value = reading.tag->text(reading.result.value);
    item.changed = item.goodAt.time_since_epoch().count() != 0 && value != item.value;
    item.value = value;
    item.goodAt = reading.at;
}

bool WatchTable::severalStations() const {
    return std::any_of(items_.begin(), items_.end(),
                       [&](WatchedItem const& each) { return each.station != items_.front().station; });
}

std::string WatchTable::headerLine(WatchHeader const& header) const {
    auto const bad = std::count_if(items_.begin(), items_.end(), [](WatchedItem const& each) { return !each.good; });
    std::string const share = bad == 0 ? "" : fmt::format("{} of {} not good, ", bad, items_.size());
    return fmt::format("round {}, {}{:.0f} ms (least on this line: {:.0f} ms), {}", header.rounds, share,
                       header.roundMs, header.floorMs, counted(header.failures, "failure", "failures"));
}

/** The reasons in the order of the rows, each with the variables concerned, without those already shown. */
std::vector<std::string> WatchTable::reasonLines(std::string const& told) const {
    std::vector<std::string> reasons;
    std::map<std::string, std::vector<WatchedItem const*>> items;
    for (WatchedItem const& item : items_) {
        std::string const reason = displayable(item.reason);
        if (reason.empty() || told.find(reason) != std::string::npos) {
            continue;
        }
        if (items[reason].empty()) {
            reasons.push_back(reason);
        }
        items[reason].push_back(&item);
    }
    Lines lines;
    for (std::string const& reason : reasons) {
        WatchedItem const& first = *items[reason].front();
        std::size_t const others = items[reason].size() - 1;
        lines.push_back(fmt::format("{}{}{}: {}", severalStations() ? displayable(first.station) + ":" : "",
                                    displayable(first.name), others == 0 ? "" : fmt::format(" and {} more", others),
                                    reason));
    }
    return lines;
}

std::vector<std::string> WatchTable::lines(WatchHeader const& header, std::chrono::system_clock::time_point now,
                                           std::size_t width, std::size_t height, Terminal const& terminal) const {
    std::vector<WatchRow> rows;
    for (WatchedItem const& item : items_) {
        rows.push_back(rowOf(item, now));
    }
    Lines const table = fittedRows(rows, severalStations(), width);
    auto const firstRow = table.begin() + 2;
    std::string const trouble = cutAtEnd(header.trouble, width);
    Sections sections{{cutAtEnd(headerLine(header), width), terminal.coloured(Colour::Red, trouble)},
                      {table.begin(), firstRow},
                      {},
                      {}};
    for (auto row = firstRow; row != table.end(); ++row) {
        WatchedItem const& item = items_[static_cast<std::size_t>(row - firstRow)];
        sections.rows.push_back(terminal.coloured(colourOf(item), *row));
    }
    for (std::string const& line : reasonLines(trouble)) {
        if (sections.reasons.empty()) {
            sections.reasons.emplace_back();
        }
        sections.reasons.push_back(terminal.coloured(Colour::Red, cutAtEnd(line, width)));
    }
    return stacked(std::move(sections), width, height);
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
