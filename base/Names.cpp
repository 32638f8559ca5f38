#include "base/Names.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace base {
namespace {

using Row = std::vector<std::size_t>;

/** Independent of the system's language: PLC names contain ASCII letters only. */
char upper(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

/** Whether the two letters up to @p i and the two up to @p j are the same in opposite order. */
bool areSwapped(std::string_view one, std::size_t i, std::string_view other, std::size_t j) {
    return i > 0 && j > 0 && one[i] == other[j - 1] && one[i - 1] == other[j];
}

/**
 * How many typing errors turn one into the other: a letter changed, added or omitted, or two neighbours swapped
 * (Damerau).
 */
std::size_t distance(std::string_view one, std::string_view other) {
    Row beforeLast;
    Row last(other.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        Row row{i + 1};
        for (std::size_t j = 0; j < other.size(); ++j) {
            std::size_t const changed = last[j] + (one[i] == other[j] ? 0 : 1);
            std::size_t const swapped = areSwapped(one, i, other, j) ? beforeLast[j - 1] + 1 : changed;
            row.push_back(std::min({changed, swapped, row[j] + 1, last[j + 1] + 1}));
        }
        beforeLast = std::exchange(last, std::move(row));
    }
    return last.back();
}

std::string listOf(std::span<std::string const> texts, char const* lastJoint) {
    std::string list;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        bool const last = i + 1 == texts.size();
        list += (i == 0 ? "" : last ? lastJoint : ", ") + texts[i];
    }
    return list;
}

/** The part of the name after its last dot. */
std::string_view lastPart(std::string_view name) {
    return name.substr(name.find_last_of('.') + 1);
}

/** Small for names that are easily confused: a typing error, or the program's name omitted. */
std::size_t strangeness(std::string_view meant, std::string_view candidate) {
    std::size_t const whole = distance(meant, candidate);
    if (meant.find('.') != std::string_view::npos) {
        return whole;
    }
    std::size_t const part = distance(meant, lastPart(candidate));
    return std::min(whole, part == 0 ? 0 : part + 1);
}

} // namespace

std::string upperCase(std::string_view text) {
    std::string all(text);
    std::transform(all.begin(), all.end(), all.begin(), upper);
    return all;
}

bool sameName(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return upper(a) == upper(b); });
}

std::vector<std::string> similarNames(std::string_view name, std::span<std::string const> candidates,
                                      std::size_t most) {
    constexpr std::size_t kLettersForASlip = 3; // one typing error is accepted in this many letters
    std::string const meant = upperCase(name);
    std::size_t const limit = std::max<std::size_t>(1, meant.size() / kLettersForASlip);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (std::string const& candidate : candidates) {
        std::size_t const difference = strangeness(meant, upperCase(candidate));
        if (difference <= limit) {
            found.emplace_back(difference, candidate);
        }
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> names;
    for (std::size_t i = 0; i < std::min(most, found.size()); ++i) {
        names.push_back(std::move(found[i].second));
    }
    return names;
}

std::string orList(std::span<std::string const> texts) {
    return listOf(texts, " or ");
}

std::string andList(std::span<std::string const> texts) {
    return listOf(texts, " and ");
}

std::string didYouMean(std::string_view name, std::span<std::string const> candidates) {
    std::vector<std::string> const names = similarNames(name, candidates);
    return names.empty() ? std::string() : "; did you mean " + orList(names) + "?";
}

} // namespace base
