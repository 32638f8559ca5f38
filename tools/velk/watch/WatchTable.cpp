#include "tools/velk/watch/WatchTable.h"

#include "tools/common/TextTable.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace velk {
namespace {

std::string headerLine(WatchHeader const& header) {
    return fmt::format("round {}, {:.0f} ms (least on this line: {:.0f} ms), {} failures", header.rounds,
                       header.roundMs, header.floorMs, header.failures);
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

Colour colourOf(WatchedItem const& item) {
    return !item.good ? Colour::Red : item.changed ? Colour::Yellow : Colour::None;
}

} // namespace

void WatchTable::update(std::span<Reading const> readings) {
    items_.resize(readings.size());
    for (std::size_t i = 0; i < readings.size(); ++i) {
        WatchedItem& item = items_[i];
        Reading const& reading = readings[i];
        item.good = reading.result.good;
        item.status = statusWord(reading);
        item.changed = false;
        if (!item.good) {
            continue;
        }
        std::string const value = reading.tag->text(reading.result.value);
        item.changed = item.goodAt.time_since_epoch().count() != 0 && value != item.value;
        item.value = value;
        item.goodAt = reading.at;
    }
}

std::vector<std::string> WatchTable::lines(std::span<Tag const> tags, WatchHeader const& header,
                                           std::chrono::system_clock::time_point now, std::size_t width,
                                           std::size_t height, Terminal const& terminal) const {
    tools::TextTable table({"name", "type", "value", "status", "age"});
    for (std::size_t i = 0; i < items_.size(); ++i) {
        WatchedItem const& item = items_[i];
        bool const seen = item.goodAt.time_since_epoch().count() != 0;
        table.add({displayable(tags[i].name), displayable(tags[i].typeText()), displayable(item.value), item.status,
                   seen ? ageText(now - item.goodAt) : "-"});
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
