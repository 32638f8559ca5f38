#pragma once

#include "tests/support/Bytes.h"

#include <string>
#include <string_view>

/** Frames as they stand on the line, written down byte by byte. */
namespace tracetest {

using velktest::Bytes;
using velktest::Hex;
using velktest::operator+;

// Bare framing, least significant byte first.
inline constexpr std::string_view kLinkCheck = "AA AA 09 00 01 00 52 01 | 42 E0 20 26 29 00 00 5D 05";
inline constexpr std::string_view kAck1 = "55 55 0A 00 01 00";
inline constexpr std::string_view kAck0 = "55 55 0A 00 00 00";
inline constexpr std::string_view kStatusDone = "AA AA 02 00 01 00 58 01 | 00 00";

/** 4 bytes at 18 of area 0 and bit 5 of byte 1 of area 2; project 12345678. */
inline constexpr std::string_view kRead =
    "AA AA 1E 00 01 00 DD 01 | 2E 00 02 00 00 00 | 00 00 12 00 00 00 04 00 00 00 | "
    "02 00 0D 00 00 00 00 00 00 00 | 78 56 34 12";
inline constexpr std::string_view kReadReply = "AA AA 0D 00 01 00 90 01 | 00 00 00 00 00 00 | 01 2A 00 00 00 | 01 01";

inline constexpr std::string_view kFileOpen =
    "AA AA 11 00 01 00 04 01 | 31 00 0D 00 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00";
inline constexpr std::string_view kFilePiece = "AA AA 09 00 01 00 69 01 | 00 00 01 00 03 00 | 01 02 03";

// Bare framing, most significant byte first.
inline constexpr std::string_view kBigLogin = "AA AA 00 0E 00 01 6D 01 | 01 00 00 00 02 00 00 00 06 00 00 00 00 00";
inline constexpr std::string_view kBigLoginDone = "AA AA 00 02 00 01 43 01 | 03 E8";
inline constexpr std::string_view kBigAck1 = "55 55 00 0A 00 01";
inline constexpr std::string_view kBigAck0 = "55 55 00 0A 00 00";

/** 1234 into 2 bytes at 16 of area 0; project 9. */
inline constexpr std::string_view kBigWrite =
    "AA AA 00 16 00 01 9A 01 | 3C 00 00 00 00 01 | 00 00 00 00 00 10 00 00 00 02 | 04 D2 | 00 00 00 09";
inline constexpr std::string_view kBigDone = "AA AA 00 02 00 01 58 01 | 00 00";

/** Block size 512, two levels: hop 43 to 10.0.0.1, hop 29 to 10.0.0.2. */
inline constexpr std::string_view kHeader = "4F 00 02 20 2B 0A 00 00 01 00 1D 0A 00 00 02 00 00 00 00";

} // namespace tracetest
