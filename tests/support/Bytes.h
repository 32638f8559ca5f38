#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/** Bytes as the tests write them down: "AA AA 09 00", with any blanks and "|" between the digits. */
namespace velktest {

using Bytes = std::vector<unsigned char>;

inline int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    throw std::invalid_argument("not a hexadecimal digit: " + std::string(1, c));
}

/** The bytes of a text of hexadecimal digit pairs. */
inline Bytes Hex(std::string_view text) {
    Bytes bytes;
    int high = -1;
    for (char const c : text) {
        if (c == ' ' || c == '|' || c == '\n') {
            continue;
        }
        if (high < 0) {
            high = HexDigit(c);
        } else {
            bytes.push_back(static_cast<unsigned char>(high * 16 + HexDigit(c)));
            high = -1;
        }
    }
    if (high >= 0) {
        throw std::invalid_argument("half a byte at the end of: " + std::string(text));
    }
    return bytes;
}

/** The bytes as upper-case digit pairs; a long text is shortened in the middle. */
inline std::string ToHex(std::span<unsigned char const> bytes) {
    constexpr std::size_t kShown = 80;
    constexpr char const* kDigits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (bytes.size() > 2 * kShown && i == kShown) {
            i = bytes.size() - kShown;
            text += "... ";
        }
        text += kDigits[bytes[i] / 16];
        text += kDigits[bytes[i] % 16];
        text += ' ';
    }
    return text + "(" + std::to_string(bytes.size()) + " bytes)";
}

/** The characters of a text, without a terminating zero. */
inline Bytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

/** @p count bytes that count up from @p first. */
inline Bytes Counting(std::size_t count, unsigned first = 0) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>((first + i) & 0xFFU);
    }
    return bytes;
}

inline Bytes operator+(Bytes left, Bytes const& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/** @p value as @p width bytes, least significant first. */
inline Bytes Little(std::uint64_t value, int width) {
    Bytes bytes;
    for (int i = 0; i < width; ++i) {
        bytes.push_back(static_cast<unsigned char>((value >> (8 * i)) & 0xFFU));
    }
    return bytes;
}

/** @p value as @p width bytes, most significant first. */
inline Bytes Big(std::uint64_t value, int width) {
    Bytes bytes;
    for (int i = width - 1; i >= 0; --i) {
        bytes.push_back(static_cast<unsigned char>((value >> (8 * i)) & 0xFFU));
    }
    return bytes;
}

} // namespace velktest
