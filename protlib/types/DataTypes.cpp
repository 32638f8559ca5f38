#include "protlib/types/DataTypes.h"

#include "protlib/text/TextUtils.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace ProtUtilsN {

constinit std::array<DataType, 26> const DataTypes{{
    {"boolean", ICU_BOOLEAN, ICU_NONE, 1, 0x1},
    {"byte", ICU_BYTE, ICU_NONE, 1, 0x2},
    {"short", ICU_SHORT, ICU_NONE, 2, 0x4},
    {"int", ICU_INT, ICU_NONE, 4, 0x8},
    {"unsignedByte", ICU_UNSIGNED_BYTE, ICU_NONE, 1, 0x10},
    {"unsignedShort", ICU_UNSIGNED_SHORT, ICU_NONE, 2, 0x20},
    {"unsignedInt", ICU_UNSIGNED_INT, ICU_NONE, 4, 0x40},
    {"float", ICU_FLOAT, ICU_NONE, 4, 0x80},
    {"double", ICU_DOUBLE, ICU_NONE, 8, 0x100},
    {"string-", ICU_STRING, ICU_BYTE, 0, 0x200},
    {"binary-", ICU_BINARY, ICU_UNSIGNED_BYTE, 0, 0x400},
    {"time", ICU_TIME, ICU_NONE, 8, 0x800},
    {"boolean-", ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 0, 0x1000},
    {"byte-", ICU_BYTE_ARRAY, ICU_BYTE, 0, 0x2000},
    {"short-", ICU_SHORT_ARRAY, ICU_SHORT, 0, 0x4000},
    {"int-", ICU_INT_ARRAY, ICU_INT, 0, 0x8000},
    {"unsignedByte-", ICU_UNSIGNED_BYTE_ARRAY, ICU_UNSIGNED_BYTE, 0, 0x10000},
    {"unsignedShort-", ICU_UNSIGNED_SHORT_ARRAY, ICU_UNSIGNED_SHORT, 0, 0x20000},
    {"unsignedInt-", ICU_UNSIGNED_INT_ARRAY, ICU_UNSIGNED_INT, 0, 0x40000},
    {"float-", ICU_FLOAT_ARRAY, ICU_FLOAT, 0, 0x80000},
    {"double-", ICU_DOUBLE_ARRAY, ICU_DOUBLE, 0, 0x100000},
    {"time-", ICU_TIME_ARRAY, ICU_TIME, 0, 0x200000},
    {"uint64", ICU_UINT64, ICU_NONE, 8, 0x400000},
    {"int64", ICU_INT64, ICU_NONE, 8, 0x800000},
    {"uint64-", ICU_UINT64_ARRAY, ICU_UINT64, 0, 0x1000000},
    {"int64-", ICU_INT64_ARRAY, ICU_INT64, 0, 0x2000000},
}};

namespace {

constexpr int kLastTypeWithLength = ICU_INT64; // the lookup omits the 64-bit arrays on purpose
constexpr int kVersion = 200;

/** Cuts "(word,word)" off @p text and appends its words to @p params; false when the ")" is missing. */
bool takeParameters(std::string& text, std::vector<std::string>& params) {
    auto const open = text.find('(');
    if (open == std::string::npos) {
        return true;
    }
    auto const close = text.find(')');
    if (close == std::string::npos) {
        return false;
    }
    // With a ")" before the "(", everything after the "(" is treated as words.
    auto const length = close > open ? close - open - 1 : std::string::npos;
    ParseSubstrings(text.substr(open + 1, length), params, ',');
    text = GetTrim(text.substr(0, open));
    return true;
}

/** Shortens @p text to the name and returns the count after its first "-", 1 without one. */
std::int64_t takeCount(std::string& text) {
    auto const hyphen = text.find('-');
    if (hyphen == std::string::npos) {
        return 1;
    }
    auto const count = parseInteger(text.c_str() + hyphen + 1, 10);
    text.resize(hyphen + 1);
    return count;
}

/** Host length of @p count elements; nothing when it is negative or does not fit. */
std::optional<int> lengthOf(DataType const& row, std::int64_t count) {
    constexpr std::int64_t kMaxInt = std::numeric_limits<int>::max();
    if (row.length != 0) {
        return row.length;
    }
    if (count < 0 || count > kMaxInt) {
        return std::nullopt;
    }
    std::int64_t const bytes = GetDataLength(row.basicType) * count;
    return bytes <= kMaxInt ? std::optional(static_cast<int>(bytes)) : std::nullopt;
}

DataType const* rowOfType(ICU_Type type) {
    auto const row = static_cast<std::size_t>(type) - 1; // 0, no type, wraps to a number too large for a row
    return row < DataTypes.size() ? &DataTypes[row] : nullptr;
}

} // namespace

bool GetICOMType(std::string const& text, ICU_Type& type, ICU_Type& basicType, int& length,
                 std::vector<std::string>& params) {
    auto name = GetTrim(text);
    if (!takeParameters(name, params)) {
        return false;
    }
    auto const count = takeCount(name);
    auto const row = std::find_if(DataTypes.begin(), DataTypes.end(), [&](auto const& r) { return name == r.name; });
    if (row == DataTypes.end()) {
        return false;
    }
    std::optional<int> const bytes = lengthOf(*row, count);
    if (!bytes) {
        return false;
    }
    length = *bytes;
    type = row->type;
    basicType = row->basicType;
    return true;
}

int GetDataLength(ICU_Type type) {
    auto const* row = type <= kLastTypeWithLength ? rowOfType(type) : nullptr;
    return row == nullptr ? 0 : row->length;
}

bool IsBitType(ICU_Type type) {
    return type == ICU_BOOLEAN || type == ICU_BOOLEAN_ARRAY;
}

int GetTypeFlag(ICU_Type type) {
    auto const* row = rowOfType(type);
    return row == nullptr ? 0 : row->flag;
}

int GetVersion() {
    return kVersion;
}

} // namespace ProtUtilsN
