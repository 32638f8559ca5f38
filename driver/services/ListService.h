#pragma once

#include "driver/config/ByteOrder.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/**
 * Payloads of the services logout, link check, login and variable list.
 *
 * All numbers are in the node's byte order. Every reply begins with a status word of 16 bits. Pure code, without the
 * frames that carry the payloads and without the driver.
 */
namespace _VELK {

inline constexpr std::uint16_t kStatusDone = 0;
inline constexpr std::uint16_t kStatusLoggedIn = 1000; ///< the only good answer to a login

/** The two status words of a PLC that runs another program than the request's project identifier names. */
inline constexpr std::uint16_t kStatusOtherProject1 = 0x48;
inline constexpr std::uint16_t kStatusOtherProject2 = 0x33;

inline constexpr std::size_t kStatusWordLength = 2;
inline constexpr unsigned char kGoodQuality = 1; ///< of a value in the reply to a read; any other is bad

/** Writes the link check, 9 bytes; the PLC's answer has no meaning. Returns its length. @p request holds 14 bytes. */
int writeLinkCheck(std::span<unsigned char> request);

/** Writes the logout, 1 byte; answered by kStatusDone. Returns its length. @p request holds 14 bytes. */
int writeLogout(std::span<unsigned char> request);

/** Writes the login, 14 bytes; answered by kStatusLoggedIn. Returns its length. @p request holds 14 bytes. */
int writeLogin(std::span<unsigned char> request, ByteOrder order);

/** Status word of a reply; nothing when the reply is too short for one. */
std::optional<std::uint16_t> replyStatus(std::span<unsigned char const> reply, ByteOrder order);

/** One variable of a list. */
struct ListItem {
    std::uint16_t area = 0;   ///< memory area in the PLC
    std::uint32_t offset = 0; ///< bytes from the area's start, or bits in a bit area
    std::uint32_t size = 0;   ///< bytes, 0 in a bit area
};

/**
 * Builds a variable list:
 *
 *     offset 0  0x2E to read, 0x3C to write
 *     offset 1  0
 *     offset 2  number of items, 32 bits
 *     offset 6  for each item: area 16 bits, offset 32 bits, size 32 bits and, to write, the value
 *     then      project identifier, 32 bits
 *
 * Each step returns false, with nothing written, when the buffer has no room for it. The buffer must hold the six bytes
 * before the items.
 */
class ListRequest {
public:
    ListRequest(std::span<unsigned char> buffer, ByteOrder order, bool write, std::uint32_t itemCount);

    bool addItem(ListItem const& item);
    bool addValue(std::span<unsigned char const> value);
    bool addProjectIdentifier(std::uint32_t identifier);

    [[nodiscard]] int length() const { return static_cast<int>(length_); }

private:
    std::span<unsigned char> take(std::size_t count);
    [[nodiscard]] bool hasRoom(std::size_t count) const { return count <= buffer_.size() - length_; }

    std::span<unsigned char> buffer_;
    std::size_t length_ = 0;
    ByteOrder order_;
};

/**
 * Walks the values in the reply to a read:
 *
 *     offset 0  status word
 *     offset 2  four bytes without meaning to the driver
 *     offset 6  for each item in the order of the request: quality, 1 byte, then the value
 */
class ListReply {
public:
    explicit ListReply(std::span<unsigned char const> reply);

    /** One item of the reply. */
    struct Value {
        unsigned char quality = 0;
        std::span<unsigned char const> bytes; ///< part of the reply
    };

    /** The next item, its value being @p length bytes long; nothing when the reply ends before it. */
    std::optional<Value> next(std::size_t length);

    /** Whether the end of the reply is reached. */
    [[nodiscard]] bool atEnd() const { return position_ == reply_.size(); }

private:
    std::span<unsigned char const> reply_;
    std::size_t position_;
};

} // namespace _VELK
