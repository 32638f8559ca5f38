#include "driver/services/ListService.h"

#include <algorithm>
#include <array>

namespace _VELK {

namespace {

constexpr unsigned char kLoginService = 0x01;
constexpr unsigned char kLogoutService = 0x02;
constexpr unsigned char kReadService = 0x2E;
constexpr unsigned char kWriteService = 0x3C;

constexpr std::array<unsigned char, 9> kLinkCheck{0x42, 0xE0, 0x20, 0x26, 0x29, 0x00, 0x00, 0x5D, 0x05};

// The PLC requires these two numbers in the login; their meaning is not known here.
constexpr std::size_t kLoginLength = 14;
constexpr std::uint32_t kLoginNumber1 = 2;
constexpr std::uint32_t kLoginNumber2 = 6;

constexpr std::size_t kListHeaderLength = 6;
constexpr std::size_t kItemLength = 10;
constexpr std::size_t kProjectIdentifierLength = 4;
constexpr std::size_t kValuesOffset = 6;

} // namespace

int writeLinkCheck(std::span<unsigned char> request) {
    std::copy(kLinkCheck.begin(), kLinkCheck.end(), request.begin());
    return static_cast<int>(kLinkCheck.size());
}

int writeLogout(std::span<unsigned char> request) {
    request[0] = kLogoutService;
    return 1;
}

int writeLogin(std::span<unsigned char> request, ByteOrder order) {
    std::span<unsigned char> const bytes = request.first(kLoginLength);
    std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    bytes[0] = kLoginService;
    put32(bytes.subspan(1), kLoginNumber1, order);
    put32(bytes.subspan(5), kLoginNumber2, order);
    return static_cast<int>(kLoginLength);
}

std::optional<std::uint16_t> replyStatus(std::span<unsigned char const> reply, ByteOrder order) {
    if (reply.size() < kStatusWordLength) {
        return std::nullopt;
    }
    return get16(reply, order);
}

ListRequest::ListRequest(std::span<unsigned char> buffer, ByteOrder order, bool write, std::uint32_t itemCount)
    : buffer_(buffer), order_(order) {
    std::span<unsigned char> const header = take(kListHeaderLength);
    header[0] = write ? kWriteService : kReadService;
    header[1] = 0;
    put32(header.subspan(2), itemCount, order_);
}

bool ListRequest::addItem(ListItem const& item) {
    if (!hasRoom(kItemLength)) {
        return false;
    }
    std::span<unsigned char> const bytes = take(kItemLength);
    put16(bytes, item.area, order_);
    put32(bytes.subspan(2), item.offset, order_);
    put32(bytes.subspan(6), item.size, order_);
    return true;
}

bool ListRequest::addValue(std::span<unsigned char const> value) {
    if (!hasRoom(value.size())) {
        return false;
    }
    std::copy(value.begin(), value.end(), take(value.size()).begin());
    return true;
}

bool ListRequest::addProjectIdentifier(std::uint32_t identifier) {
    if (!hasRoom(kProjectIdentifierLength)) {
        return false;
    }
    put32(take(kProjectIdentifierLength), identifier, order_);
    return true;
}

std::span<unsigned char> ListRequest::take(std::size_t count) {
    std::span<unsigned char> const bytes = buffer_.subspan(length_, count);
    length_ += count;
    return bytes;
}

ListReply::ListReply(std::span<unsigned char const> reply)
    : reply_(reply), position_(std::min(kValuesOffset, reply.size())) {}

std::optional<ListReply::Value> ListReply::next(std::size_t length) {
    std::size_t const left = reply_.size() - position_;
    if (left == 0 || length > left - 1) {
        return std::nullopt;
    }
    Value const value{reply_[position_], reply_.subspan(position_ + 1, length)};
    position_ += 1 + length;
    return value;
}

} // namespace _VELK
