#include "tools/velk/Tag.h"

#include "host/ValueText.h"
#include "interfaces/ITag.h"

namespace velk {

std::string Tag::text(host::ValueBytes const& bytes) const {
    host::Result<std::string> const text = host::formatValue(access.shownAs, bytes);
    return text.ok() ? text.value() : text.failure().text;
}

nlohmann::json Tag::json(host::ValueBytes const& bytes) const {
    return text(bytes);
}

host::Result<host::ValueBytes> Tag::parse(std::string_view text) const {
    return host::parseValue(text, access.shownAs, static_cast<std::size_t>(tag->GetVarLength()));
}

} // namespace velk
