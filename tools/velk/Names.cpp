#include "tools/velk/Names.h"

#include <algorithm>
#include <cctype>
#include <fnmatch.h>

namespace velk {

std::string upperCase(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return upper;
}

bool isPattern(std::string_view text) {
    return text.find_first_of("*?[") != std::string_view::npos;
}

bool matches(std::string_view pattern, std::string_view name) {
    return fnmatch(upperCase(pattern).c_str(), upperCase(name).c_str(), FNM_NOESCAPE) == 0;
}

} // namespace velk
