#pragma once

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace host {

/** True when @p name is one of @p names, byte for byte. False for a null name. */
inline bool isOneOf(char const* name, std::initializer_list<std::string_view> names) {
    return name != nullptr && std::find(names.begin(), names.end(), std::string_view(name)) != names.end();
}

} // namespace host
