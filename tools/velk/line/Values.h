#pragma once

#include "base/Result.h"
#include "host/values/TagReader.h"
#include "tools/velk/line/Access.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <string_view>

namespace velk {

/** A value from the driver, as text: true, 12, 36.6, [1, 2], "text", and bytes as pairs of hex digits. */
std::string valueText(Access const& access, host::ValueBytes const& bytes);

/** The same for JSON: booleans, numbers, texts, arrays of them; null for NaN and infinity. */
nlohmann::json valueJson(Access const& access, host::ValueBytes const& bytes);

/**
 * The bytes for the driver: what valueText() writes (quotes may be left out), TRUE in any case, numbers also as
 * 0xFF and 16#FF.
 *
 * @param length bytes of the value
 * @param typeName the name of the type for messages
 */
base::Result<host::ValueBytes> parseValue(Access const& access, std::string_view text, std::size_t length,
                                          std::string const& typeName);

} // namespace velk
