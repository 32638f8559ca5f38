#include "driver/services/FileService.h"

#include <algorithm>
#include <cstddef>

namespace _VELK {

namespace {

constexpr unsigned char kOpenAndReadService = 0x31;
constexpr unsigned char kReadNextService = 0x32;
constexpr std::size_t kNameLengthOffset = 2;
constexpr std::size_t kNameOffset = 4;
constexpr std::size_t kMaxNameLength = 0xFFFE; // with its zero the length field is at its maximum

constexpr std::uint16_t kFileReadDone = 0;
constexpr std::size_t kMoreDataOffset = 2;
constexpr std::size_t kCountOffset = 4;
constexpr std::size_t kDataOffset = 6;

} // namespace

int writeOpenAndRead(std::span<unsigned char> request, std::string_view name, ByteOrder order) {
    std::size_t const length = kNameOffset + name.size() + 1;
    if (name.size() > kMaxNameLength || length > request.size()) {
        return 0;
    }
    request[0] = kOpenAndReadService;
    request[1] = 0;
    put16(request.subspan(kNameLengthOffset), static_cast<std::uint16_t>(name.size() + 1), order);
    std::copy(name.begin(), name.end(), request.subspan(kNameOffset).begin());
    request[length - 1] = 0;
    return static_cast<int>(length);
}

int writeReadNext(std::span<unsigned char> request) {
    request[0] = kReadNextService;
    return 1;
}

std::optional<FilePiece> readFilePiece(std::span<unsigned char const> reply, ByteOrder order) {
    if (reply.size() < kDataOffset || get16(reply, order) != kFileReadDone) {
        return std::nullopt;
    }
    std::size_t const count = get16(reply.subspan(kCountOffset), order);
    if (count > reply.size() - kDataOffset) {
        return std::nullopt;
    }
    return FilePiece{reply.subspan(kDataOffset, count), get16(reply.subspan(kMoreDataOffset), order) == 0};
}

} // namespace _VELK
