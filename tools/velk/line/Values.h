#pragma once

#include "base/Result.h"
#include "host/values/TagReader.h"
#include "tools/velk/line/Access.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <string_view>

namespace velk {

/** A value as the driver answers it, as text: true, 12, 36.6, [1, 2], "text", and bytes as pairs of hex digits. */
std::string valueText(Access const& access, host::ValueBytes const& bytes);

/** The same for JSON: booleans, numbers, texts, arrays of them; null for what is no number there (NaN). */
nlohmann::json valueJson(Access const& access, host::ValueBytes const& bytes);

/**
 * The bytes for the driver: what valueText() writes (quotes may be left out), TRUE in any case, numbers also as
 * 0xFF and 16#FF.
 *
 * @param length bytes of the value
 * @param typeName what to call the type in a complaint
 */
base::Result<host::ValueBytes> parseValue(Access const& access, std::string_view text, std::size_t length,
                                          std::string const& typeName);

} // namespace velk
