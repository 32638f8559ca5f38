#include "tools/common/TextTable.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tools {
namespace {

constexpr std::size_t kGap = 2;
constexpr unsigned kContinuationMask = 0xC0;
constexpr unsigned kContinuation = 0x80;

void appendPadded(std::string& line, std::string const& cell, std::size_t width) {
    line += cell;
    std::size_t const filled = characterCount(cell);
    line.append(width - std::min(width, filled) + kGap, ' ');
}

void endLine(std::string& text) {
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
}

} // namespace

std::size_t characterCount(std::string const& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & kContinuationMask) != kContinuation;
    }));
}

TextTable::TextTable(std::vector<std::string> header)
    : limits_(header.size(), std::numeric_limits<std::size_t>::max()) {
    rows_.push_back(std::move(header));
}

void TextTable::add(std::vector<std::string> row) {
    row.resize(rows_.front().size());
    rows_.push_back(std::move(row));
}

std::string TextTable::text(std::string const& indent) const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (std::vector<std::string> const& row : rows_) {
        for (std::size_t column = 0; column < widths.size(); ++column) {
            std::size_t const width = characterCount(row[column]);
            widths[column] = width <= limits_[column] ? std::max(widths[column], width) : widths[column];
        }
    }
    std::string text;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        text += indent;
        for (std::size_t column = 0; column < widths.size(); ++column) {
            appendPadded(text, rows_[row][column], widths[column]);
        }
        endLine(text);
        if (row == 0) {
            text += indent;
            for (std::size_t const width : widths) {
                appendPadded(text, std::string(width, '-'), width);
            }
            endLine(text);
        }
    }
    return text;
}

} // namespace tools
