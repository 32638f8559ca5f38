#include "host/values/ValueText.h"

#include "host/values/Counted.h"
#include "host/values/ScalarText.h"
#include "host/values/ValueTypes.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace host {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

std::optional<unsigned> hexDigit(char c) {
    char const upper = c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
    std::size_t const value = kHexDigits.find(upper);
    return value != std::string_view::npos ? std::optional(static_cast<unsigned>(value)) : std::nullopt;
}

void appendHex(std::string& text, unsigned char byte) {
    text += kHexDigits[byte / 16];
    text += kHexDigits[byte % 16];
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    std::size_t const first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// ---- texts

constexpr std::string_view kEscapedCharacters = "\n\r\t\\";
constexpr std::string_view kEscapeLetters = "nrt\\";

std::string formatString(std::span<unsigned char const> bytes) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7F;
    std::string text;
    for (unsigned char const byte :
         bytes.first(static_cast<std::size_t>(std::find(bytes.begin(), bytes.end(), 0) - bytes.begin()))) {
        std::size_t const escape = kEscapedCharacters.find(static_cast<char>(byte));
        if (escape != std::string_view::npos) {
            text += '\\';
            text += kEscapeLetters[escape];
        } else if (byte < kFirstPrintable || byte == kDelete) {
            text += "\\x";
            appendHex(text, byte);
        } else {
            text += static_cast<char>(byte);
        }
    }
    return text;
}

/** The byte that an escape after a "\" means; removes the escape from @p rest. Nothing for an unknown one. */
std::optional<unsigned char> takeEscape(std::string_view& rest) {
    if (rest.empty()) {
        return std::nullopt;
    }
    if (rest.front() == 'x' && rest.size() >= 3) {
        auto const high = hexDigit(rest[1]);
        auto const low = hexDigit(rest[2]);
        rest.remove_prefix(3);
        return high && low ? std::optional(static_cast<unsigned char>(*high * 16 + *low)) : std::nullopt;
    }
    std::size_t const escape = kEscapeLetters.find(rest.front());
    rest.remove_prefix(1);
    return escape != std::string_view::npos ? std::optional(static_cast<unsigned char>(kEscapedCharacters[escape]))
                                            : std::nullopt;
}

base::Result<Bytes> parseString(std::string_view text, std::size_t length) {
    Bytes bytes;
    for (std::string_view rest = text; !rest.empty();) {
        char const c = rest.front();
        rest.remove_prefix(1);
        auto const byte = c == '\\' ? takeEscape(rest) : std::optional(static_cast<unsigned char>(c));
        if (!byte) {
            return base::Failure{base::FailureKind::Value,
                                 "'" + std::string(text) +
                                     "' has a \\ that is not followed by n, r, t, \\ or x and two "
                                     "hexadecimal digits"};
        }
        bytes.push_back(*byte);
    }
    if (bytes.size() > length) {
        return base::Failure{base::FailureKind::Value, "'" + std::string(text) + "' has " +
                                                           counted(bytes.size(), "byte") + ", there is room for " +
                                                           std::to_string(length)};
    }
    bytes.resize(length, 0);
    return bytes;
}

// ---- binary

std::string formatBinary(std::span<unsigned char const> bytes) {
    std::string text;
    for (unsigned char const byte : bytes) {
        appendHex(text, byte);
    }
    return text;
}

base::Failure wrongCount(std::string_view text, char const* what, std::size_t count, std::size_t wanted) {
    return base::Failure{base::FailureKind::Value, "'" + std::string(text) + "' has " + counted(count, what) +
                                                       " instead of " + std::to_string(wanted)};
}

base::Result<Bytes> parseBinary(std::string_view text, std::size_t length) {
    Bytes bytes;
    for (std::string_view rest = trimmed(text); !rest.empty(); rest = trimmed(rest.substr(2))) {
        auto const high = hexDigit(rest[0]);
        auto const low = rest.size() > 1 ? hexDigit(rest[1]) : std::nullopt;
        if (!high || !low) {
            return base::Failure{base::FailureKind::Value,
                                 "'" + std::string(text) + "' does not consist of pairs of hexadecimal digits"};
        }
        bytes.push_back(static_cast<unsigned char>(*high * 16 + *low));
    }
    if (bytes.size() != length) {
        return wrongCount(text, "byte", bytes.size(), length);
    }
    return bytes;
}

// ---- arrays

base::Result<std::string> formatArray(ICU_Type element, std::span<unsigned char const> bytes) {
    std::size_t const width = scalarWidth(element);
    std::string text = "[";
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(width, bytes.size()))) {
        auto const one = formatScalar(element, bytes.first(std::min(width, bytes.size())));
        if (!one.ok()) {
            return one.failure();
        }
        text += (text.size() > 1 ? ", " : "") + one.value();
    }
    return text + "]";
}

std::vector<std::string_view> splitElements(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('[') && text.ends_with(']')) {
        text = trimmed(text.substr(1, text.size() - 2));
    }
    std::vector<std::string_view> elements;
    while (!text.empty() || !elements.empty()) {
        std::size_t const comma = text.find(',');
        elements.push_back(trimmed(text.substr(0, comma)));
        if (comma == std::string_view::npos) {
            break;
        }
        text.remove_prefix(comma + 1);
    }
    return elements;
}

base::Result<Bytes> parseArray(std::string_view text, ICU_Type element, std::size_t length) {
    std::size_t const width = scalarWidth(element);
    auto const elements = splitElements(text);
    if (length % width != 0 || elements.size() != length / width) {
        return wrongCount(text, "element", elements.size(), length / width);
    }
    Bytes bytes(length);
    std::span<unsigned char> rest(bytes);
    for (std::string_view const one : elements) {
        if (base::Outcome const parsed = parseScalar(one, element, rest.first(width)); !parsed.ok()) {
            return parsed.failure();
        }
        rest = rest.subspan(width);
    }
    return bytes;
}

} // namespace

base::Result<std::string> formatValue(ICU_Type type, std::span<unsigned char const> bytes) {
    if (type == ICU_STRING) {
        return formatString(bytes);
    }
    if (type == ICU_BINARY) {
        return formatBinary(bytes);
    }
    ICU_Type const element = arrayElement(type);
    return element != ICU_NONE ? formatArray(element, bytes) : formatScalar(type, bytes);
}

base::Result<Bytes> parseValue(std::string_view text, ICU_Type type, std::size_t length) {
    if (type == ICU_STRING) {
        return parseString(text, length);
    }
    if (type == ICU_BINARY) {
        return parseBinary(text, length);
    }
    if (ICU_Type const element = arrayElement(type); element != ICU_NONE) {
        return parseArray(text, element, length);
    }
    Bytes bytes(scalarWidth(type) == length ? length : 0);
    base::Outcome const parsed = parseScalar(trimmed(text), type, bytes);
    return parsed.ok() ? base::Result<Bytes>(std::move(bytes)) : parsed.failure();
}

base::Result<Bytes> parseValue(std::string_view text, ICU_Type type) {
    return parseValue(text, type, scalarWidth(type));
}

} // namespace host
