#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tools {

/** Columns of text, each as wide as its widest cell or as its limit. */
class TextTable {
public:
    explicit TextTable(std::vector<std::string> header);

    /** Missing cells are empty. */
    void add(std::vector<std::string> row);

    /** Cells that are wider than this do not widen their column; what follows them stands farther right. */
    void limitColumn(std::size_t column, std::size_t widest) { limits_.at(column) = widest; }

    /** One line a row, a ruled header first, each line behind @p indent. */
    [[nodiscard]] std::string text(std::string const& indent = "") const;

private:
    std::vector<std::vector<std::string>> rows_; ///< the first one is the header
    std::vector<std::size_t> limits_;            ///< by column
};

/** Characters of a UTF-8 text, for the width of a column. Those of East Asia, which are twice as wide, count as one. */
std::size_t characterCount(std::string const& text);

} // namespace tools
