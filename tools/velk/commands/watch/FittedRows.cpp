#include "tools/velk/commands/watch/FittedRows.h"

#include "tools/common/TextTable.h"
#include "tools/velk/text/Fitting.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace velk {
namespace {

using Column = std::string WatchRow::*;
using Widths = std::vector<std::size_t>;

constexpr std::size_t kGap = 2; // between the columns of a table
constexpr std::size_t kWhole = std::numeric_limits<std::size_t>::max();

/** Columns, and how far some of them may be narrowed. */
struct Layout {
    bool types = true;
    std::size_t leastValue = kWhole;
    std::size_t leastName = kWhole;
    std::size_t leastStation = kWhole;
};

/** The widest first. */
constexpr Layout kLayouts[]{{true, 12, kWhole, kWhole}, {false, 8, kWhole, kWhole}, {false, 7, 7, 5}};

WatchRow const kHeads{"station", "name", "type", "value", "status", "age", true};

std::vector<Column> columnsOf(Layout const& layout, bool stations) {
    std::vector<Column> columns;
    if (stations) {
        columns.push_back(&WatchRow::station);
    }
    columns.push_back(&WatchRow::name);
    if (layout.types) {
        columns.push_back(&WatchRow::type);
    }
    for (Column const last : {&WatchRow::value, &WatchRow::status, &WatchRow::age}) {
        columns.push_back(last);
    }
    return columns;
}

Widths naturalWidths(std::vector<WatchRow> const& rows, std::vector<Column> const& columns) {
    Widths widths;
    for (Column const column : columns) {
        std::size_t width = tools::characterCount(kHeads.*column);
        for (WatchRow const& row : rows) {
            width = std::max(width, tools::characterCount(row.*column));
        }
        widths.push_back(width);
    }
    return widths;
}

/** Narrows one column by the excess width, as far as it may be narrowed. */
void narrow(Widths& widths, std::vector<Column> const& columns, Column which, std::size_t least, std::size_t& excess) {
    auto const place = std::find(columns.begin(), columns.end(), which);
    if (place == columns.end()) {
        return;
    }
    std::size_t& width = widths[static_cast<std::size_t>(place - columns.begin())];
    std::size_t const given = std::min(excess, width > least ? width - least : 0);
    width -= given;
    excess -= given;
}

/** Widths that fit, or nothing. */
std::optional<Widths> fit(Widths widths, std::vector<Column> const& columns, Layout const& layout, std::size_t width) {
    std::size_t const total = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
    std::size_t excess = total > width ? total - width : 0;
    narrow(widths, columns, &WatchRow::value, layout.leastValue, excess);
    narrow(widths, columns, &WatchRow::station, layout.leastStation, excess);
    narrow(widths, columns, &WatchRow::name, layout.leastName, excess);
    return excess == 0 ? std::optional(std::move(widths)) : std::nullopt;
}

std::string cell(WatchRow const& row, Column column, std::size_t width) {
    bool const isName = column == &WatchRow::name || column == &WatchRow::station;
    return isName ? cutAtStart(row.*column, width) : cutAtEnd(row.*column, width);
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

std::vector<std::string> drawn(std::vector<WatchRow> const& rows, std::vector<Column> const& columns,
                               Widths const& widths) {
    std::vector<std::string> cells;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        cells.push_back(firstCharacters(kHeads.*columns[i], widths[i]));
    }
    tools::TextTable table(cells);
    for (WatchRow const& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            cells[i] = cell(row, columns[i], widths[i]);
        }
        table.add(cells);
    }
    return split(table.text());
}

/** Names and values only, cut as far as necessary. */
std::vector<std::string> narrowest(std::vector<WatchRow> rows, bool stations, std::size_t width) {
    for (WatchRow& row : rows) {
        row.name = stations ? row.station + ":" + row.name : row.name;
        row.value = row.good ? row.value : row.status;
    }
    std::vector<Column> const columns{&WatchRow::name, &WatchRow::value};
    Widths const natural = naturalWidths(rows, columns);
    constexpr Layout kNarrow{false, 7, 4, 0}; // 7: MISSING
    std::vector<std::string> lines = drawn(rows, columns, fit(natural, columns, kNarrow, width).value_or(Widths{4, 7}));
    for (std::string& line : lines) {
        line = firstCharacters(line, width);
    }
    return lines;
}

} // namespace

std::vector<std::string> fittedRows(std::vector<WatchRow> const& rows, bool stations, std::size_t width) {
    for (Layout const& layout : kLayouts) {
        std::vector<Column> const columns = columnsOf(layout, stations);
        if (auto const widths = fit(naturalWidths(rows, columns), columns, layout, width)) {
            return drawn(rows, columns, *widths);
        }
    }
    return narrowest(rows, stations, width);
}

} // namespace velk
