#include "driver/link/Acknowledge.h"

namespace _VELK {

namespace {

constexpr unsigned char kAcknowledgeId = 0x55; // sent twice
constexpr std::uint16_t kAcknowledgeCode = 10;
constexpr std::size_t kCodeOffset = 2;
constexpr std::size_t kNumberOffset = 4;

} // namespace

void writeAcknowledge(std::span<unsigned char> message, std::uint16_t number, ByteOrder order) {
    message[0] = kAcknowledgeId;
    message[1] = kAcknowledgeId;
    put16(message.subspan(kCodeOffset), kAcknowledgeCode, order);
    put16(message.subspan(kNumberOffset), number, order);
}

bool isAcknowledge(std::span<unsigned char const> message, std::uint16_t number, ByteOrder order) {
    return message.size() >= kAcknowledgeLength && message[0] == kAcknowledgeId && message[1] == kAcknowledgeId &&
           get16(message.subspan(kCodeOffset), order) == kAcknowledgeCode &&
           get16(message.subspan(kNumberOffset), order) == number;
}

} // namespace _VELK
