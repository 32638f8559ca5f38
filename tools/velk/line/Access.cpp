#include "tools/velk/line/Access.h"

#include "host/values/ValueTypes.h"
#include "tools/velk/line/SymbolTable.h"
#include "tools/velk/project/DriverType.h"
#include "tools/velk/text/Names.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <optional>

namespace velk {
namespace {

constexpr std::size_t kWideElement = 8; // bytes of LINT, ULINT, LREAL
constexpr std::uint16_t kBitAreas = 3;  // M, I and Q can be addressed bit by bit

struct PlcType {
    std::string_view name;
    ICU_Type type;
    ICU_Type array;
};

constexpr std::array<PlcType, 24> kPlcTypes{{
    {"BOOL", ICU_BOOLEAN, ICU_BOOLEAN_ARRAY},
    {"BYTE", ICU_UNSIGNED_BYTE, ICU_UNSIGNED_BYTE_ARRAY},
    {"SINT", ICU_BYTE, ICU_BYTE_ARRAY},
    {"USINT", ICU_UNSIGNED_BYTE, ICU_UNSIGNED_BYTE_ARRAY},
    {"INT", ICU_SHORT, ICU_SHORT_ARRAY},
    {"UINT", ICU_UNSIGNED_SHORT, ICU_UNSIGNED_SHORT_ARRAY},
    {"WORD", ICU_UNSIGNED_SHORT, ICU_UNSIGNED_SHORT_ARRAY},
    {"DINT", ICU_INT, ICU_INT_ARRAY},
    {"UDINT", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"DWORD", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"REAL", ICU_FLOAT, ICU_FLOAT_ARRAY},
    {"LREAL", ICU_DOUBLE, ICU_DOUBLE_ARRAY},
    {"LINT", ICU_INT64, ICU_INT64_ARRAY},
    {"ULINT", ICU_UINT64, ICU_UINT64_ARRAY},
    {"LWORD", ICU_UINT64, ICU_UINT64_ARRAY},
    {"TIME", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"DATE", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"TOD", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"TIME_OF_DAY", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"DT", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"DATE_AND_TIME", ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
    {"LTIME", ICU_UINT64, ICU_UINT64_ARRAY},
    {"STRING", ICU_STRING, ICU_NONE},
    {"BIT", ICU_BOOLEAN, ICU_NONE},
}};

/** The row of an elementary type, STRING(20) included; null for any other. */
PlcType const* plcTypeNamed(std::string_view name) {
    std::string const upper = upperCase(name.substr(0, name.find_first_of("([ ")));
    auto const* const found =
        std::find_if(kPlcTypes.begin(), kPlcTypes.end(), [&](PlcType const& type) { return type.name == upper; });
    bool const wholeName = upper.size() == name.size() || upper == "STRING";
    return found != kPlcTypes.end() && wholeName ? &*found : nullptr;
}

/** The text after OF in "ARRAY [0..9] OF INT"; nothing when the type is not an array. */
std::optional<std::string> elementName(std::string_view type) {
    std::string const upper = upperCase(type);
    std::size_t const of = upper.rfind(" OF ");
    if (!upper.starts_with("ARRAY") || of == std::string::npos) {
        return std::nullopt;
    }
    std::size_t const name = upper.find_first_not_of(' ', of + 3);
    return name == std::string::npos ? std::nullopt : std::optional(upper.substr(name));
}

/** Removes a number and the blanks around it from the start of a text. */
std::optional<std::int64_t> takeNumber(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::int32_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return number;
}

bool take(std::string_view& text, std::string_view word) {
    bool const there = text.starts_with(word);
    text.remove_prefix(there ? word.size() : 0);
    return there;
}

/** How many elements "ARRAY [1..3, 0..1] OF ..." has; nothing when its bounds are invalid. */
std::optional<std::size_t> elementCount(std::string_view type) {
    constexpr std::int64_t kMost = 0x7FFFFFFF;
    std::string_view rest = type.substr(std::min(type.find('['), type.size()));
    std::int64_t count = 1;
    if (!take(rest, "[")) {
        return std::nullopt;
    }
    do {
        auto const low = takeNumber(rest);
        bool const range = take(rest, "..");
        auto const high = takeNumber(rest);
        if (!low || !range || !high || *high < *low || *high - *low >= kMost / count) {
            return std::nullopt;
        }
        count *= *high - *low + 1;
    } while (take(rest, ","));
    return take(rest, "]") ? std::optional(static_cast<std::size_t>(count)) : std::nullopt;
}

bool isWide(ICU_Type type) {
    return type == ICU_INT64 || type == ICU_UINT64 || type == ICU_INT64_ARRAY || type == ICU_UINT64_ARRAY ||
           type == ICU_DOUBLE_ARRAY;
}

Access asBytes(std::uint32_t size, ICU_Type shownAs) {
    Access access;
    access.dataType = driverTypeText(ICU_UNSIGNED_BYTE_ARRAY, size);
    access.shownAs = shownAs;
    return access;
}

Access wideAccess(std::uint32_t size, ICU_Type type, bool bigEndian) {
    Access access = asBytes(size, type);
    access.reversed = bigEndian != (std::endian::native == std::endian::big);
    return access;
}

Access directAccess(ICU_Type type, std::size_t count) {
    Access access;
    access.dataType = driverTypeText(type, count);
    access.shownAs = type;
    return access;
}

Access scalarAccess(PlcType const& type, std::uint32_t size, bool bigEndian) {
    if (type.type == ICU_STRING) {
        return directAccess(ICU_STRING, size);
    }
    if (size != host::scalarWidth(type.type)) {
        return asBytes(size, ICU_BINARY);
    }
    return isWide(type.type) ? wideAccess(size, type.type, bigEndian) : directAccess(type.type, 1);
}

Access textArrayAccess(Variable const& variable) {
    std::optional<std::size_t> const count = elementCount(variable.type);
    Access access = asBytes(variable.size, ICU_BINARY);
    if (count && *count > 0 && variable.size % *count == 0) {
        access.textLength = variable.size / *count;
    }
    return access;
}

Access arrayAccess(Variable const& variable, PlcType const& element, bool bigEndian) {
    if (element.type == ICU_STRING) {
        return textArrayAccess(variable);
    }
    std::size_t const width = host::scalarWidth(element.type);
    if (element.array == ICU_NONE || variable.size % width != 0) {
        return asBytes(variable.size, ICU_BINARY);
    }
    if (element.array == ICU_BOOLEAN_ARRAY) {
        return asBytes(variable.size, ICU_BOOLEAN_ARRAY);
    }
    return isWide(element.array) ? wideAccess(variable.size, element.array, bigEndian)
                                 : directAccess(element.array, variable.size / width);
}

Access accessByType(Variable const& variable, bool bigEndian) {
    if (std::optional<std::string> const name = elementName(variable.type)) {
        PlcType const* const element = plcTypeNamed(*name);
        return element != nullptr ? arrayAccess(variable, *element, bigEndian) : asBytes(variable.size, ICU_BINARY);
    }
    PlcType const* const type = plcTypeNamed(variable.type);
    return type != nullptr ? scalarAccess(*type, variable.size, bigEndian) : asBytes(variable.size, ICU_BINARY);
}

bool isBitArea(std::string_view area) {
    return area == "MB" || area == "IB" || area == "QB";
}

/** The address space for single bits in the area of a variable. */
base::Result<std::string> bitArea(std::string const& area, Variable const* variable) {
    std::string const letter = !area.empty() ? area : variable != nullptr ? areaName(variable->area) : "M";
    if (isBitArea(letter)) {
        return letter;
    }
    if (letter == "M" || letter == "I" || letter == "Q") {
        return letter + "B";
    }
    return base::Failure{base::FailureKind::Unreachable,
                         "single bits can be addressed in the areas M, I and Q only, not in " + letter};
}

base::Result<std::string> byteArea(std::string const& area, Variable const* variable) {
    if (area.empty() && variable != nullptr && variable->area >= kAddressableAreas) {
        return base::Failure{base::FailureKind::Unreachable, "it is in memory area " + std::to_string(variable->area) +
                                                                 ", which the driver cannot reach"};
    }
    return !area.empty() ? area : variable != nullptr ? areaName(variable->area) : "M";
}

} // namespace

base::Result<Access> inferAccess(Variable const& variable, bool bigEndian) {
    base::Result<std::string> const area = byteArea("", &variable);
    if (!area.ok()) {
        return area.failure();
    }
    if (variable.size == 0) {
        return base::Failure{base::FailureKind::Unreachable,
                             "the symbol file gives it no size; give its type as " + variable.name + ":TYPE"};
    }
    if (upperCase(variable.type) == "BIT") {
        return chosenAccess("bit", "", &variable);
    }
    Access access = accessByType(variable, bigEndian);
    access.addressSpace = area.value();
    return access;
}

base::Result<Access> chosenAccess(std::string const& type, std::string const& area, Variable const* variable) {
    bool const bit = type == "bit";
    base::Result<std::string> const space = bit ? bitArea(area, variable) : byteArea(area, variable);
    if (!space.ok()) {
        return space.failure();
    }
    base::Result<DriverType> const parsed = parseDriverType(bit ? "boolean" : type);
    if (!parsed.ok()) {
        return base::Failure{base::FailureKind::Unreachable, parsed.failure().text};
    }
    ICU_Type const wanted = parsed.value().type;
    if (isBitArea(space.value()) && wanted != ICU_BOOLEAN) {
        return base::Failure{base::FailureKind::Unreachable,
                             "the area " + space.value() + " has single bits: its type is boolean, not " + type};
    }
    return Access{bit ? "boolean" : type, space.value(), wanted, false, 0};
}

host::ValueBytes inOtherOrder(Access const& access, std::span<unsigned char const> bytes) {
    host::ValueBytes turned(bytes.begin(), bytes.end());
    if (access.reversed) {
        for (auto at = turned.begin(); turned.end() - at >= static_cast<std::ptrdiff_t>(kWideElement);
             at += kWideElement) {
            std::reverse(at, at + kWideElement);
        }
    }
    return turned;
}

} // namespace velk
