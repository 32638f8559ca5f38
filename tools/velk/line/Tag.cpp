#include "tools/velk/line/Tag.h"

#include "interfaces/ITag.h"
#include "tools/velk/line/Values.h"

#include <algorithm>

namespace velk {

std::string Tag::text(host::ValueBytes const& bytes) const {
    return valueText(access, bytes);
}

std::string Tag::plainText(host::ValueBytes const& bytes) const {
    nlohmann::json const value = json(bytes);
    return value.is_string() ? value.get<std::string>() : text(bytes);
}

nlohmann::json Tag::json(host::ValueBytes const& bytes) const {
    return valueJson(access, bytes);
}

base::Result<host::ValueBytes> Tag::parse(std::string_view text) const {
    std::size_t const length = tag != nullptr ? static_cast<std::size_t>(std::max(0, tag->GetVarLength())) : 0;
    return parseValue(access, text, length, plcType);
}

} // namespace velk
