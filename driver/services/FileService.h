#pragma once

#include "driver/config/ByteOrder.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/**
 * Payloads of the file-read service, which fetches a file from the PLC piece by piece.
 *
 * Open and read:
 *
 *     offset 0  0x31
 *     offset 1  0
 *     offset 2  length of the name with its terminating zero, 16 bits, in the node's byte order
 *     offset 4  the name and the zero
 *
 * Read next: the one byte 0x32. Reply to both, numbers of 16 bits in the node's byte order:
 *
 *     offset 0  status, 0 is success
 *     offset 2  0 when this is the last piece
 *     offset 4  number of file bytes n
 *     offset 6  n bytes of the file; bytes after them have no meaning
 *
 * Pure code, without files and without the frames that carry the payloads.
 */
namespace _VELK {

/**
 * Writes the request that opens the PLC's file @p name and reads its first piece.
 *
 * @return the length of the request, or 0 when it does not fit @p request or the name has more than 65,534 characters
 */
int writeOpenAndRead(std::span<unsigned char> request, std::string_view name, ByteOrder order);

/** Writes the request for the next piece, 1 byte. Returns its length. */
int writeReadNext(std::span<unsigned char> request);

/** One piece of a file. */
struct FilePiece {
    std::span<unsigned char const> bytes; ///< part of the reply
    bool last = false;
};

/** The piece in a reply; nothing when the PLC refused or the reply is shorter than it claims. */
std::optional<FilePiece> readFilePiece(std::span<unsigned char const> reply, ByteOrder order);

} // namespace _VELK
