#include "plc/program/ValueCodec.h"

#include "plc/frames/Text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace plc {

namespace {

/// The value as a whole number of type T, or nothing when it is not a number or does not fit.
template <std::integral T>
std::optional<T> wholeNumber(Value const& value) {
    return std::visit(
        [](auto const& content) -> std::optional<T> {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, bool>) {
                return static_cast<T>(content ? 1 : 0);
            } else if constexpr (std::is_integral_v<Content>) {
                return std::in_range<T>(content) ? std::optional(static_cast<T>(content)) : std::nullopt;
            } else {
                return std::nullopt;
            }
        },
        value.content());
}

std::optional<double> realNumber(Value const& value) {
    return std::visit(
        [](auto const& content) -> std::optional<double> {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(content)>>) {
                return static_cast<double>(content);
            } else {
                return std::nullopt;
            }
        },
        value.content());
}

[[noreturn]] void refuse(std::string_view text) {
    throw std::invalid_argument(std::string(text));
}

/// Descriptions cannot have whole numbers above 2^63 - 1, so a larger one is written as a text.
Value withoutQuotes(Value const& value) {
    auto const* const text = std::get_if<std::string>(&value.content());
    if (text == nullptr) {
        return value;
    }
    std::uint64_t number = 0;
    auto const [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    bool const whole = error == std::errc() && end == text->data() + text->size();
    return whole ? Value(number) : value;
}

template <typename T>
T given(std::optional<T> const& number) {
    if (!number) {
        refuse("the value does not fit the type");
    }
    return *number;
}

/// The bytes at a place, or the one that holds its bit.
template <typename AnyMemory>
auto bytesAt(AnyMemory& memory, Place const& place) {
    auto const bytes = place.kind == TypeKind::kBit ? memory.at(place.area, place.offset / 8, 1)
                                                    : memory.at(place.area, place.offset, place.size);
    if (place.listedOnly || !bytes) {
        refuse("the variable has no memory");
    }
    return *bytes;
}

template <std::integral T>
void storeWhole(std::span<std::uint8_t> bytes, Value const& value, ByteOrder order) {
    storeOrdered(bytes, 0, order, static_cast<std::make_unsigned_t<T>>(given(wholeNumber<T>(value))));
}

template <std::integral T>
Value loadWhole(ByteView bytes, ByteOrder order) {
    return static_cast<T>(loadOrdered<std::make_unsigned_t<T>>(bytes, 0, order));
}

/// A truth value, also written as 0 or 1.
bool truth(Value const& value) {
    std::uint8_t const number = given(wholeNumber<std::uint8_t>(value));
    if (number > 1) {
        refuse("the value does not fit the type");
    }
    return number == 1;
}

void storeBit(std::span<std::uint8_t> bytes, Place const& place, Value const& value) {
    unsigned const mask = 1U << place.offset % 8;
    unsigned const others = bytes[0] & ~mask;
    bytes[0] = static_cast<std::uint8_t>(truth(value) ? others | mask : others);
}

void storeText(std::span<std::uint8_t> bytes, Value const& value) {
    auto const* const text = std::get_if<std::string>(&value.content());
    if (text == nullptr || text->size() >= bytes.size()) {
        refuse("the value is not a text, or is too long for the type");
    }
    std::fill(std::copy(text->begin(), text->end(), bytes.begin()), bytes.end(), std::uint8_t{0});
}

Value loadText(ByteView bytes) {
    return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
}

void storeReal(std::span<std::uint8_t> bytes, Value const& value, ByteOrder order) {
    double const number = given(realNumber(value));
    if (std::isfinite(number) && std::abs(number) > double{std::numeric_limits<float>::max()}) {
        refuse("the value does not fit the type");
    }
    storeOrdered(bytes, 0, order, std::bit_cast<std::uint32_t>(static_cast<float>(number)));
}

} // namespace

void writeValue(Memory& memory, Place const& place, Value const& value, ByteOrder order) {
    std::span<std::uint8_t> const bytes = bytesAt(memory, place);
    switch (place.kind) {
    case TypeKind::kBit:
        return storeBit(bytes, place, value);
    case TypeKind::kBool:
        bytes[0] = truth(value) ? 1 : 0;
        return;
    case TypeKind::kSint:
        return storeWhole<std::int8_t>(bytes, value, order);
    case TypeKind::kByte:
    case TypeKind::kUsint:
        return storeWhole<std::uint8_t>(bytes, value, order);
    case TypeKind::kInt:
        return storeWhole<std::int16_t>(bytes, value, order);
    case TypeKind::kUint:
    case TypeKind::kWord:
        return storeWhole<std::uint16_t>(bytes, value, order);
    case TypeKind::kDint:
        return storeWhole<std::int32_t>(bytes, value, order);
    case TypeKind::kUdint:
    case TypeKind::kDword:
    case TypeKind::kTime:
        return storeWhole<std::uint32_t>(bytes, value, order);
    case TypeKind::kLint:
        return storeWhole<std::int64_t>(bytes, value, order);
    case TypeKind::kUlint:
        return storeWhole<std::uint64_t>(bytes, withoutQuotes(value), order);
    case TypeKind::kReal:
        return storeReal(bytes, value, order);
    case TypeKind::kLreal:
        return storeOrdered(bytes, 0, order, std::bit_cast<std::uint64_t>(given(realNumber(value))));
    case TypeKind::kString:
        return storeText(bytes, value);
    case TypeKind::kArray:
    case TypeKind::kStructure:
        break;
    }
    refuse("only an element or a member has a value");
}

Value readValue(Memory const& memory, Place const& place, ByteOrder order) {
    ByteView const bytes = bytesAt(memory, place);
    switch (place.kind) {
    case TypeKind::kBit:
        return (bytes[0] >> place.offset % 8 & 1U) != 0;
    case TypeKind::kBool:
        return bytes[0] != 0;
    case TypeKind::kSint:
        return loadWhole<std::int8_t>(bytes, order);
    case TypeKind::kByte:
    case TypeKind::kUsint:
        return loadWhole<std::uint8_t>(bytes, order);
    case TypeKind::kInt:
        return loadWhole<std::int16_t>(bytes, order);
    case TypeKind::kUint:
    case TypeKind::kWord:
        return loadWhole<std::uint16_t>(bytes, order);
    case TypeKind::kDint:
        return loadWhole<std::int32_t>(bytes, order);
    case TypeKind::kUdint:
    case TypeKind::kDword:
    case TypeKind::kTime:
        return loadWhole<std::uint32_t>(bytes, order);
    case TypeKind::kLint:
        return loadWhole<std::int64_t>(bytes, order);
    case TypeKind::kUlint:
        return loadWhole<std::uint64_t>(bytes, order);
    case TypeKind::kReal:
        return std::bit_cast<float>(loadOrdered<std::uint32_t>(bytes, 0, order));
    case TypeKind::kLreal:
        return std::bit_cast<double>(loadOrdered<std::uint64_t>(bytes, 0, order));
    case TypeKind::kString:
        return loadText(bytes);
    case TypeKind::kArray:
    case TypeKind::kStructure:
        break;
    }
    refuse("only an element or a member has a value");
}

} // namespace plc
