#include "tools/velk/text/Names.h"

#include <fnmatch.h>

namespace velk {

bool isPattern(std::string_view text) {
    return text.find_first_of("*?[") != std::string_view::npos;
}

bool matches(std::string_view pattern, std::string_view name) {
    return fnmatch(upperCase(pattern).c_str(), upperCase(name).c_str(), FNM_NOESCAPE) == 0;
}

} // namespace velk
