#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/** Reads a dotted IPv4 address. */
class IPParser {
public:
    /**
     * Reads four decimal numbers below 256 with a dot between them; an empty number is 0.
     *
     * On failure the octets before the fault are kept.
     */
    bool Parse(char const* text);

    /** Octet 0 (the first of the text) to 3; 0 for any other index. All are 0 before the first Parse(). */
    [[nodiscard]] unsigned char GetOctet(std::size_t index) const;

private:
    bool parseOctet(std::string_view digits, std::size_t index);

    std::array<unsigned char, 4> octets_{};
};

/** Reads a dotted address, first octet most significant; @p address is unchanged when @p text is not one. */
void parseIpAddress(char const* text, unsigned int& address);
