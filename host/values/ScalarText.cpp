#include "host/values/ScalarText.h"

#include "host/values/ValueTypes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>
#include <type_traits>

namespace host {

namespace {

static_assert(std::numeric_limits<float>::is_iec559 && sizeof(float) == 4);
static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == 8);

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

template <typename Number>
std::string numberText(Number number) {
    std::array<char, 64> buffer{};
    auto const written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), written.ptr};
}

template <typename Number>
base::Failure outOfRange(std::string_view text, ICU_Type type) {
    std::string message = quoted(text) + " is out of range for " + typeName(type);
    if constexpr (std::is_integral_v<Number>) {
        message += ": " + numberText(std::numeric_limits<Number>::min()) + ".." +
                   numberText(std::numeric_limits<Number>::max());
    }
    return base::Failure{base::FailureKind::Value, message};
}

template <typename Number>
base::Failure notANumber(std::string_view text, ICU_Type type) {
    char const* const kind = std::is_integral_v<Number> ? " is not a whole number for " : " is not a number for ";
    return base::Failure{base::FailureKind::Value, quoted(text) + kind + typeName(type)};
}

/** The sign, the base and the digits of an integer. */
struct IntegerText {
    bool negative;
    int base;
    std::string_view digits;
};

IntegerText splitInteger(std::string_view text) {
    IntegerText parts{false, 10, text};
    if (!parts.digits.empty() && (parts.digits.front() == '-' || parts.digits.front() == '+')) {
        parts.negative = parts.digits.front() == '-';
        parts.digits.remove_prefix(1);
    }
    if (parts.digits.starts_with("0x") || parts.digits.starts_with("0X")) {
        parts.base = 16;
        parts.digits.remove_prefix(2);
    }
    return parts;
}

/** -magnitude or magnitude as a Number, if it fits. */
template <typename Number>
std::optional<Number> withSign(std::uint64_t magnitude, bool negative) {
    auto const most = static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
    if (!negative) {
        return magnitude <= most ? std::optional(static_cast<Number>(magnitude)) : std::nullopt;
    }
    std::uint64_t const least = std::is_signed_v<Number> ? most + 1 : 0;
    return magnitude <= least ? std::optional(static_cast<Number>(0 - magnitude)) : std::nullopt;
}

template <typename Number>
base::Result<Number> parseInteger(std::string_view text, ICU_Type type) {
    IntegerText const parts = splitInteger(text);
    char const* const end = parts.digits.data() + parts.digits.size();
    std::uint64_t magnitude = 0;
    auto const parsed = std::from_chars(parts.digits.data(), end, magnitude, parts.base);
    if (parsed.ec == std::errc::invalid_argument || parsed.ptr != end) {
        return notANumber<Number>(text, type);
    }
    auto const number = parsed.ec == std::errc() ? withSign<Number>(magnitude, parts.negative) : std::nullopt;
    if (!number) {
        return outOfRange<Number>(text, type);
    }
    return *number;
}

template <typename Number>
base::Result<Number> parseReal(std::string_view text, ICU_Type type) {
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-")) {
        digits.remove_prefix(1);
    }
    Number number = 0;
    auto const parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (parsed.ec == std::errc::invalid_argument || parsed.ptr != digits.data() + digits.size()) {
        return notANumber<Number>(text, type);
    }
    if (parsed.ec != std::errc()) {
        return outOfRange<Number>(text, type);
    }
    return number;
}

base::Result<unsigned char> parseBoolean(std::string_view text) {
    if (text == "true" || text == "1") {
        return static_cast<unsigned char>(1);
    }
    if (text == "false" || text == "0") {
        return static_cast<unsigned char>(0);
    }
    return base::Failure{base::FailureKind::Value, quoted(text) + " is not a boolean: give true, false, 1 or 0"};
}

template <typename Number>
base::Result<Number> parseNumber(std::string_view text, ICU_Type type) {
    if constexpr (std::is_floating_point_v<Number>) {
        return parseReal<Number>(text, type);
    } else {
        return parseInteger<Number>(text, type);
    }
}

template <typename Number>
base::Outcome store(base::Result<Number> const& number, std::span<unsigned char> bytes) {
    if (!number.ok()) {
        return number.failure();
    }
    std::memcpy(bytes.data(), &number.value(), sizeof(Number));
    return {};
}

/** Calls @p step with a zero of the C++ type of a numeric type. False for any other type. */
template <typename Step>
bool withNumberType(ICU_Type type, Step&& step) {
    switch (type) {
    case ICU_BYTE:
        step(std::int8_t{});
        return true;
    case ICU_SHORT:
        step(std::int16_t{});
        return true;
    case ICU_INT:
        step(std::int32_t{});
        return true;
    case ICU_INT64:
        step(std::int64_t{});
        return true;
    case ICU_UNSIGNED_BYTE:
        step(std::uint8_t{});
        return true;
    case ICU_UNSIGNED_SHORT:
        step(std::uint16_t{});
        return true;
    case ICU_UNSIGNED_INT:
        step(std::uint32_t{});
        return true;
    case ICU_UINT64:
    case ICU_TIME:
        step(std::uint64_t{});
        return true;
    case ICU_FLOAT:
        step(float{});
        return true;
    case ICU_DOUBLE:
        step(double{});
        return true;
    default:
        return false;
    }
}

base::Failure notAScalar(ICU_Type type) {
    return base::Failure{base::FailureKind::Value, std::string("a value of the type ") + typeName(type) +
                                                       " and this length cannot be shown as text"};
}

bool hasWidth(ICU_Type type, std::size_t bytes) {
    return bytes != 0 && bytes == scalarWidth(type);
}

} // namespace

base::Result<std::string> formatScalar(ICU_Type type, std::span<unsigned char const> bytes) {
    if (!hasWidth(type, bytes.size())) {
        return notAScalar(type);
    }
    if (type == ICU_BOOLEAN) {
        return std::string(bytes.front() != 0 ? "true" : "false");
    }
    std::string text;
    withNumberType(type, [&]<typename Number>(Number number) {
        std::memcpy(&number, bytes.data(), sizeof number);
        text = numberText(number);
    });
    return text;
}

base::Outcome parseScalar(std::string_view text, ICU_Type type, std::span<unsigned char> bytes) {
    if (!hasWidth(type, bytes.size())) {
        return notAScalar(type);
    }
    if (type == ICU_BOOLEAN) {
        return store(parseBoolean(text), bytes);
    }
    base::Outcome outcome;
    withNumberType(type,
                   [&]<typename Number>(Number /*zero*/) { outcome = store(parseNumber<Number>(text, type), bytes); });
    return outcome;
}

} // namespace host
