#include "host/values/ValueTypes.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

struct TypeRow {
    ICU_Type type;
    char const* name;
    std::size_t width;
    ICU_Type element;
};

constexpr std::array kTypes = {
    TypeRow{ICU_BOOLEAN, "boolean", 1, ICU_NONE},
    TypeRow{ICU_BYTE, "byte", 1, ICU_NONE},
    TypeRow{ICU_SHORT, "short", 2, ICU_NONE},
    TypeRow{ICU_INT, "int", 4, ICU_NONE},
    TypeRow{ICU_UNSIGNED_BYTE, "unsignedByte", 1, ICU_NONE},
    TypeRow{ICU_UNSIGNED_SHORT, "unsignedShort", 2, ICU_NONE},
    TypeRow{ICU_UNSIGNED_INT, "unsignedInt", 4, ICU_NONE},
    TypeRow{ICU_FLOAT, "float", 4, ICU_NONE},
    TypeRow{ICU_DOUBLE, "double", 8, ICU_NONE},
    TypeRow{ICU_STRING, "string", 0, ICU_NONE},
    TypeRow{ICU_BINARY, "binary", 0, ICU_NONE},
    TypeRow{ICU_TIME, "time", 8, ICU_NONE},
    TypeRow{ICU_BOOLEAN_ARRAY, "boolean", 0, ICU_BOOLEAN},
    TypeRow{ICU_BYTE_ARRAY, "byte", 0, ICU_BYTE},
    TypeRow{ICU_SHORT_ARRAY, "short", 0, ICU_SHORT},
    TypeRow{ICU_INT_ARRAY, "int", 0, ICU_INT},
    TypeRow{ICU_UNSIGNED_BYTE_ARRAY, "unsignedByte", 0, ICU_UNSIGNED_BYTE},
    TypeRow{ICU_UNSIGNED_SHORT_ARRAY, "unsignedShort", 0, ICU_UNSIGNED_SHORT},
    TypeRow{ICU_UNSIGNED_INT_ARRAY, "unsignedInt", 0, ICU_UNSIGNED_INT},
    TypeRow{ICU_FLOAT_ARRAY, "float", 0, ICU_FLOAT},
    TypeRow{ICU_DOUBLE_ARRAY, "double", 0, ICU_DOUBLE},
    TypeRow{ICU_TIME_ARRAY, "time", 0, ICU_TIME},
    TypeRow{ICU_UINT64, "uint64", 8, ICU_NONE},
    TypeRow{ICU_INT64, "int64", 8, ICU_NONE},
    TypeRow{ICU_UINT64_ARRAY, "uint64", 0, ICU_UINT64},
    TypeRow{ICU_INT64_ARRAY, "int64", 0, ICU_INT64},
};

constexpr TypeRow kUnknown{ICU_NONE, "unknown", 0, ICU_NONE};

TypeRow const& row(ICU_Type type) {
    auto const* const found =
        std::find_if(kTypes.begin(), kTypes.end(), [type](TypeRow const& known) { return known.type == type; });
    return found != kTypes.end() ? *found : kUnknown;
}

} // namespace

std::size_t scalarWidth(ICU_Type type) {
    return row(type).width;
}

ICU_Type arrayElement(ICU_Type type) {
    return row(type).element;
}

char const* typeName(ICU_Type type) {
    return row(type).name;
}

} // namespace host
