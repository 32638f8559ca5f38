#include "tools/velk/text/Fitting.h"

#include "tools/common/TextTable.h"

namespace velk {
namespace {

constexpr std::string_view kDots = "...";

/** Where character @p number begins; the size of the text when it has no more. */
std::size_t beginOf(std::string_view text, std::size_t number) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const begins = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U;
        if (begins && characters++ == number) {
            return i;
        }
    }
    return text.size();
}

} // namespace

std::string firstCharacters(std::string_view text, std::size_t width) {
    return std::string(text.substr(0, beginOf(text, width)));
}

std::string cutAtEnd(std::string_view text, std::size_t width) {
    if (width <= kDots.size() || tools::characterCount(std::string(text)) <= width) {
        return firstCharacters(text, width);
    }
    return firstCharacters(text, width - kDots.size()).append(kDots);
}

std::string cutAtStart(std::string_view text, std::size_t width) {
    std::size_t const characters = tools::characterCount(std::string(text));
    if (characters <= width) {
        return std::string(text);
    }
    bool const dots = width > kDots.size();
    std::size_t const kept = dots ? width - kDots.size() : width;
    return std::string(dots ? kDots : "").append(text.substr(beginOf(text, characters - kept)));
}

} // namespace velk
