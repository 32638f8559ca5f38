#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velk {

/** What is shown of a watched variable, as text. */
struct WatchRow {
    std::string station;
    std::string name;
    std::string type;
    std::string value;
    std::string status;
    std::string age;
    bool good = false;
};

/**
 * A table of the rows within a given width: column heads, a rule, and a line for each row.
 *
 * Whatever the width, it is visible which row is good. If space is short, these are dropped in order: the end of
 * values, the types, the start of stations and names, the ages. In the narrowest table the status replaces a value that
 * is not good.
 *
 * @param stations with a column for them
 */
std::vector<std::string> fittedRows(std::vector<WatchRow> const& rows, bool stations, std::size_t width);

} // namespace velk
