#include "symbols/NameIndex.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <chrono>
#include <cstring>
#include <new>
#include <utility>

namespace _VELK {

namespace {

constexpr std::size_t kSmallestSlotCount = 16;
constexpr std::uint32_t kNodesInBlock = 64;
constexpr std::size_t kWordSize = 4;

/** The open-addressed table is at most two thirds full, so that a probe soon finds a free slot. */
bool isTooFull(std::size_t names, std::size_t slots) noexcept {
    return names > slots / 3 * 2;
}

std::size_t slotCountFor(std::size_t names) noexcept {
    return std::bit_ceil(std::max(names + names / 2 + 2, kSmallestSlotCount));
}

std::uint8_t byteOf(char character) noexcept {
    return static_cast<std::uint8_t>(character);
}

/** An odd multiplier with its highest bit set, which the author of a symbol file cannot predict. */
std::uint32_t newMultiplier(void const* place) noexcept {
    auto const ticks = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    auto const address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(place));
    std::uint64_t const mixed = (ticks ^ (address << 20U)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::uint32_t>(mixed >> 32U) | 0x80000001U;
}

/** Multiplies to 64 bits and folds the halves together. */
std::uint32_t multiplyAndFold(std::uint32_t a, std::uint32_t b) noexcept {
    std::uint64_t const product = static_cast<std::uint64_t>(a) * b;
    return static_cast<std::uint32_t>(product) ^ static_cast<std::uint32_t>(product >> 32U);
}

} // namespace

RtsHashTag::RtsHashTag(int bucketCount, bool copyKeys, std::uint32_t expectedNames)
    : bucketCount_(std::max(bucketCount, 0)), copyKeys_(copyKeys ? 1 : 0),
      buckets_(std::make_unique<Bucket[]>(static_cast<std::size_t>(bucketCount_))), multiplier_(newMultiplier(this)) {
    for (std::size_t i = 0; i < lower_.size(); ++i) {
        lower_[i] = static_cast<std::uint8_t>(std::tolower(static_cast<int>(i)));
        upper_[i] = static_cast<std::uint8_t>(std::toupper(static_cast<int>(i)));
    }
    for (std::size_t i = 0; i < lower_.size(); ++i) {
        equalNamesShareBucket_ = equalNamesShareBucket_ && upper_[i] == upper_[lower_[i]];
    }
    if (expectedNames != 0) {
        slots_.resize(slotCountFor(expectedNames));
        nodeBlocks_.reserve(expectedNames / kNodesInBlock + 1);
    }
}

bool RtsHashTag::add(char const* key, void* value) noexcept {
    if (key == nullptr || bucketCount_ == 0) {
        return false;
    }
    try {
        makeRoom();
        std::uint32_t const hash = hashOf(key);
        Slot& slot = slots_[slotFor(key, hash)];
        if (slot.number != 0) {
            return false;
        }
        RtsHashNode& node = newNode();
        node.key = copyKeys_ != 0 ? keys_.copy(key) : key;
        node.value = value;
        appendToChain(node);
        slot = {.hash = hash, .number = ++nameCount_};
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

RtsHashNode* RtsHashTag::find(char const* key) const noexcept {
    if (key == nullptr || nameCount_ == 0) {
        return nullptr;
    }
    std::uint32_t const number = slots_[slotFor(key, hashOf(key))].number;
    return number != 0 ? &nodeAt(number) : nullptr;
}

std::uint32_t RtsHashTag::hashOf(std::string_view key) const noexcept {
    auto const lower = [this](char character) -> std::uint32_t { return lower_[byteOf(character)]; };
    std::uint32_t hash = multiplier_;
    for (; key.size() >= kWordSize; key.remove_prefix(kWordSize)) {
        std::uint32_t const word = lower(key[0]) | lower(key[1]) << 8U | lower(key[2]) << 16U | lower(key[3]) << 24U;
        hash = multiplyAndFold(hash ^ word, multiplier_);
    }
    std::uint32_t word = 0; // no byte of a name is 0, so different ends give different words
    for (char const character : key) {
        word = word << 8U | lower(character);
    }
    hash = multiplyAndFold(hash ^ word, multiplier_);
    return hash ^ hash >> 16U;
}

std::size_t RtsHashTag::bucketOf(char const* key) const noexcept {
    std::uint32_t upperSum = 0; // wraps like the signed sum that it replaces
    for (; *key != '\0'; ++key) {
        upperSum += upper_[byteOf(*key)];
    }
    std::int32_t const remainder = static_cast<std::int32_t>(upperSum) % bucketCount_;
    return static_cast<std::size_t>(remainder < 0 ? -remainder : remainder);
}

bool RtsHashTag::isSameName(char const* key, char const* other) const noexcept {
    return std::strcmp(key, other) == 0 ||
           (isEqualWithoutCase(key, other) &&
            (equalNamesShareBucket_ || bucketOf(key) == bucketOf(other))); // names are searched in their own chain only
}

bool RtsHashTag::isEqualWithoutCase(char const* a, char const* b) const noexcept {
    for (; lower_[byteOf(*a)] == lower_[byteOf(*b)]; ++a, ++b) {
        if (*a == '\0') {
            return true;
        }
    }
    return false;
}

std::size_t RtsHashTag::slotFor(char const* key, std::uint32_t hash) const noexcept {
    std::size_t const mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    while (slots_[place].number != 0 &&
           (slots_[place].hash != hash || !isSameName(key, nodeAt(slots_[place].number).key))) {
        place = (place + 1) & mask;
    }
    return place;
}

RtsHashNode& RtsHashTag::nodeAt(std::uint32_t number) const noexcept {
    return nodeBlocks_[(number - 1) / kNodesInBlock][(number - 1) % kNodesInBlock];
}

RtsHashNode& RtsHashTag::newNode() {
    if (nameCount_ / kNodesInBlock == nodeBlocks_.size()) {
        nodeBlocks_.push_back(std::make_unique<RtsHashNode[]>(kNodesInBlock));
    }
    return nodeAt(nameCount_ + 1);
}

void RtsHashTag::appendToChain(RtsHashNode& node) noexcept {
    Bucket& bucket = buckets_[bucketOf(node.key)];
    (bucket.head == nullptr ? bucket.head : bucket.tail->next) = &node;
    bucket.tail = &node;
}

void RtsHashTag::makeRoom() {
    if (!isTooFull(nameCount_ + 1, slots_.size())) {
        return;
    }
    std::vector<Slot> larger(slotCountFor(std::size_t{nameCount_} * 2 + 2));
    std::size_t const mask = larger.size() - 1;
    for (Slot const& slot : slots_) {
        if (slot.number != 0) {
            std::size_t place = slot.hash & mask;
            while (larger[place].number != 0) {
                place = (place + 1) & mask;
            }
            larger[place] = slot;
        }
    }
    slots_ = std::move(larger);
}

} // namespace _VELK
