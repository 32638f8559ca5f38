#include "protlib/text/IpAddress.h"

#include <algorithm>

namespace {

constexpr int kOctetLimit = 256;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

} // namespace

bool IPParser::Parse(char const* text) {
    std::string_view rest = text == nullptr ? "" : text;
    for (std::size_t index = 0; index + 1 < octets_.size(); ++index) {
        auto const dot = rest.find('.');
        if (dot == std::string_view::npos || !parseOctet(rest.substr(0, dot), index)) {
            return false;
        }
        rest.remove_prefix(dot + 1);
    }
    return parseOctet(rest, octets_.size() - 1);
}

unsigned char IPParser::GetOctet(std::size_t index) const {
    return index < octets_.size() ? octets_[index] : 0;
}

bool IPParser::parseOctet(std::string_view digits, std::size_t index) {
    int number = 0;
    for (auto const digit : digits) {
        if (!isDigit(digit)) {
            return false;
        }
        number = std::min(number * 10 + (digit - '0'), kOctetLimit);
    }
    if (number >= kOctetLimit) {
        return false;
    }
    octets_[index] = static_cast<unsigned char>(number);
    return true;
}

void parseIpAddress(char const* text, unsigned int& address) {
    IPParser parser;
    if (!parser.Parse(text)) {
        return;
    }
    address = 0;
    for (std::size_t index = 0; index < 4; ++index) {
        address = address << 8U | parser.GetOctet(index);
    }
}
