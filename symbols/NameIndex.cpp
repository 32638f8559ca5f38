#include "symbols/NameIndex.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <chrono>
#include <exception>
#include <utility>

namespace _VELK {

namespace {

constexpr std::size_t kSmallestSlotCount = 16;
constexpr std::size_t kSmallestNodeBlock = 16;

/** The open-addressed table is at most two thirds full, so that a probe soon meets a free slot. */
bool isTooFull(std::size_t names, std::size_t slots) noexcept {
    return names > slots / 3 * 2;
}

std::size_t slotCountFor(std::size_t names) noexcept {
    return std::bit_ceil(std::max(names + names / 2 + 2, kSmallestSlotCount));
}

std::uint8_t byteOf(char character) noexcept {
    return static_cast<std::uint8_t>(character);
}

/** An odd multiplier with its highest bit set that nobody who makes a symbol file can know. */
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

RtsHashTag::RtsHashTag(int bucketCount, bool copyKeys, std::size_t expectedNames)
    : bucketCount_(std::max(bucketCount, 0)), copyKeys_(copyKeys ? 1 : 0),
      buckets_(std::make_unique<Bucket[]>(static_cast<std::size_t>(bucketCount_))), multiplier_(newMultiplier(this)) {
    for (std::size_t i = 0; i < lower_.size(); ++i) {
        lower_[i] = static_cast<std::uint8_t>(std::tolower(static_cast<int>(i)));
        upper_[i] = static_cast<std::uint8_t>(std::toupper(static_cast<int>(i)));
    }
    if (expectedNames != 0) {
        slots_.resize(slotCountFor(expectedNames));
        addNodeBlock(expectedNames);
    }
}

bool RtsHashTag::add(char const* key, void* value) noexcept {
    if (key == nullptr || bucketCount_ == 0) {
        return false;
    }
    try {
        makeRoom();
        Digest const keyDigest = digest(key);
        Slot& slot = slots_[slotFor(key, keyDigest)];
        if (slot.node != nullptr) {
            return false;
        }
        slot.node = appendToChain(copyKeys_ != 0 ? keys_.copy(key) : key, value, bucketOf(keyDigest.upperSum));
        slot.hash = keyDigest.hash;
        ++nameCount_;
        return true;
    } catch (std::exception const&) {
        return false;
    }
}

RtsHashNode* RtsHashTag::find(char const* key) const noexcept {
    if (key == nullptr || nameCount_ == 0) {
        return nullptr;
    }
    return slots_[slotFor(key, digest(key))].node;
}

RtsHashTag::Digest RtsHashTag::digest(char const* key) const noexcept {
    std::uint32_t hash = multiplier_;
    std::uint32_t upperSum = 0;
    while (*key != '\0') {
        std::uint32_t word = 0; // up to four bytes; no byte of a name is 0, so different names give different words
        for (int i = 0; i < 4 && *key != '\0'; ++i, ++key) {
            word = word << 8U | lower_[byteOf(*key)];
            upperSum += upper_[byteOf(*key)];
        }
        hash = multiplyAndFold(hash ^ word, multiplier_);
    }
    return {.hash = hash ^ hash >> 16U, .upperSum = upperSum};
}

std::size_t RtsHashTag::bucketOf(std::uint32_t upperSum) const noexcept {
    std::int32_t const remainder = static_cast<std::int32_t>(upperSum) % bucketCount_;
    return static_cast<std::size_t>(remainder < 0 ? -remainder : remainder);
}

bool RtsHashTag::isSameName(char const* key, std::uint32_t upperSum, char const* other) const noexcept {
    std::uint32_t otherUpperSum = upperSum;
    for (; *key == *other || lower_[byteOf(*key)] == lower_[byteOf(*other)]; ++key, ++other) {
        if (*key == '\0') {
            // Equal names are the same only in the same chain; a locale may pair cases one way only.
            return otherUpperSum == upperSum || bucketOf(otherUpperSum) == bucketOf(upperSum);
        }
        otherUpperSum += upper_[byteOf(*other)];
        otherUpperSum -= upper_[byteOf(*key)];
    }
    return false;
}

std::size_t RtsHashTag::slotFor(char const* key, Digest const& digest) const noexcept {
    std::size_t const mask = slots_.size() - 1;
    std::size_t place = digest.hash & mask;
    while (slots_[place].node != nullptr &&
           (slots_[place].hash != digest.hash || !isSameName(key, digest.upperSum, slots_[place].node->key))) {
        place = (place + 1) & mask;
    }
    return place;
}

RtsHashNode* RtsHashTag::appendToChain(char const* key, void* value, std::size_t bucketNumber) {
    RtsHashNode* const node = newNode();
    node->key = key;
    node->value = value;
    Bucket& bucket = buckets_[bucketNumber];
    (bucket.head == nullptr ? bucket.head : bucket.tail->next) = node;
    bucket.tail = node;
    return node;
}

void RtsHashTag::makeRoom() {
    if (!isTooFull(nameCount_ + 1, slots_.size())) {
        return;
    }
    std::vector<Slot> larger(slotCountFor((nameCount_ + 1) * 2));
    std::size_t const mask = larger.size() - 1;
    for (Slot const& slot : slots_) {
        if (slot.node != nullptr) {
            std::size_t place = slot.hash & mask;
            while (larger[place].node != nullptr) {
                place = (place + 1) & mask;
            }
            larger[place] = slot;
        }
    }
    slots_ = std::move(larger);
}

RtsHashNode* RtsHashTag::newNode() {
    if (nodesLeft_ == 0) {
        addNodeBlock(std::max(nameCount_, kSmallestNodeBlock));
    }
    return &nodeBlocks_.back()[--nodesLeft_];
}

void RtsHashTag::addNodeBlock(std::size_t size) {
    nodeBlocks_.push_back(std::make_unique<RtsHashNode[]>(size));
    nodesLeft_ = size;
}

} // namespace _VELK
