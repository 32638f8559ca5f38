#include "protlib/text/TextUtils.h"

#include "protlib/safety/NoThrow.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace ProtUtilsN {

std::string GetTrim(std::string const& text) {
    constexpr char const* kBlanks = " \t";
    auto const first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void ParseSubstrings(std::string const& text, std::vector<std::string>& out, char separator) {
    std::string::size_type begin = 0;
    for (auto end = text.find(separator); end != std::string::npos; end = text.find(separator, begin)) {
        out.push_back(GetTrim(text.substr(begin, end - begin)));
        begin = end + 1;
    }
    out.push_back(GetTrim(text.substr(begin)));
}

void keepText(std::string& kept, char const* text) {
    if (!noThrow([&] { kept = text == nullptr ? "" : text; })) {
        kept.clear();
    }
}

std::int64_t parseInteger(char const* text, int base) {
    return text == nullptr ? 0 : std::strtoll(text, nullptr, base);
}

int clampToInt(std::int64_t value) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

} // namespace ProtUtilsN

namespace {

char digitOf(unsigned value, unsigned radix) {
    if (radix == 16 && value > 9) {
        return static_cast<char>('a' + (value - 10));
    }
    return static_cast<char>('0' + value);
}

} // namespace

char* itoa(int value, char* buffer, int radix) {
    char* end = buffer;
    if (radix >= 2) {
        auto const base = static_cast<unsigned>(radix);
        // Negated as unsigned, because the magnitude of the smallest int does not fit an int.
        auto rest = value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
        do {
            *end++ = digitOf(rest % base, base);
            rest /= base;
        } while (rest != 0);
        std::reverse(buffer, end);
    }
    *end = '\0';
    return buffer;
}
