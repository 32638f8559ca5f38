#pragma once

#include "tests/support/Bytes.h"

#include <cstddef>

namespace velktest {

/** How the messages of one PLC are framed. */
struct Framing {
    bool bigEndian = false;
    std::size_t blockSize = 128;
    Bytes routing = {}; ///< the 19 bytes before every message, or none

    Bytes Number(std::uint64_t value, int width) const { return bigEndian ? Big(value, width) : Little(value, width); }
    Bytes Word(std::uint64_t value) const { return Number(value, 2); }
    Bytes Long(std::uint64_t value) const { return Number(value, 4); }

    /** A block frame. */
    Bytes Block(unsigned number, bool last, Bytes const& payload) const {
        Bytes frame =
            Hex("AA AA") + Word(payload.size()) + Word(number) + Hex("00") + Hex(last ? "01" : "00") + payload;
        unsigned sum = 0;
        for (unsigned char const byte : frame) {
            sum += byte;
        }
        frame[6] = static_cast<unsigned char>(sum & 0xFFU);
        return routing + frame;
    }

    /** An acknowledge; block 0 is the turnaround and the closing one. */
    Bytes Ack(unsigned number) const { return routing + Hex("55 55") + Word(10) + Word(number); }
};

} // namespace velktest
