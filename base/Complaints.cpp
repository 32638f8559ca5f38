#include "base/Complaints.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace base {
namespace {

std::string joined(std::vector<std::string> const& lines) {
    std::string text;
    for (std::string const& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

std::string placeText(TextPlace place) {
    std::string text;
    for (int const number : {place.line, place.column}) {
        if (number == 0) {
            return text;
        }
        text += ":" + std::to_string(number);
    }
    return text;
}

} // namespace

FileError::FileError(std::vector<std::string> complaints)
    : std::runtime_error(joined(complaints)), complaints_(std::move(complaints)) {}

void Complaints::add(TextPlace place, std::string text) {
    if (place.line == 1) {
        place.column = std::max(0, place.column - columnsBefore_);
    }
    complaints_.push_back({place, std::move(text)});
}

FileError Complaints::error() const {
    std::vector<Complaint> sorted = complaints_;
    std::stable_sort(sorted.begin(), sorted.end(), [](Complaint const& one, Complaint const& other) {
        return std::tie(one.place.line, one.place.column) < std::tie(other.place.line, other.place.column);
    });
    std::vector<std::string> lines;
    lines.reserve(sorted.size());
    for (Complaint const& each : sorted) {
        lines.push_back(file_ + placeText(each.place) + ": " + each.text);
    }
    return FileError(std::move(lines));
}

} // namespace base
