#include "protlib/text/HexText.h"

namespace HexTextN {

int HexDigitValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    return -1;
}

bool DecodeHex(std::string_view digits, std::span<unsigned char> bytes) {
    if (digits.size() % 2 != 0 || digits.size() / 2 != bytes.size()) {
        return false;
    }
    for (auto& byte : bytes) {
        auto const high = HexDigitValue(digits[0]);
        auto const low = HexDigitValue(digits[1]);
        if (high < 0 || low < 0) {
            return false;
        }
        byte = static_cast<unsigned char>(high * 16 + low);
        digits.remove_prefix(2);
    }
    return true;
}

std::array<char, 2> EncodeHex(unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    return {kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
}

} // namespace HexTextN
