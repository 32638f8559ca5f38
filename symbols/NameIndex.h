#pragma once

#include "symbols/TextPool.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace _VELK {

/** One name of an index, a link of its bucket's chain. */
struct RtsHashNode {
    char const* key = nullptr;
    void* value = nullptr;       ///< not owned, not used
    RtsHashNode* next = nullptr; ///< the name added to the same bucket after this one, or null
};

/**
 * An index of names that ignores case: names that differ only in case count as one name, and the first one added
 * stays.
 *
 * Bucket of a name: the upper-case forms (toupper) of its bytes are added up as a signed 32-bit integer; the bucket
 * is the absolute value of the sum's remainder by the bucket count, so the empty name is in bucket 0. A new name
 * goes to the end of its bucket's chain. Two names are equal when they have the same length and the same lower-case
 * forms (tolower) byte for byte.
 *
 * The names of a PLC program often differ in digits only, so their sums share a few buckets and the chains grow long.
 * Adding and finding therefore do not walk the chains: a second, open-addressed table maps a hash of the lower-case
 * name to its node. It finds exactly what a walk through the name's chain would find.
 *
 * Case follows the C library's locale at the time when the index was created. Not safe for use from several threads.
 */
class RtsHashTag {
public:
    /**
     * @param bucketCount fixed for the life of the index; with 0 or less the index refuses every name
     * @param copyKeys true: names are copied and owned by the index; false: the caller's pointers are kept and must
     *        stay valid as long as the index
     * @param expectedNames how many names will be added, so that the table need not grow; more is allowed
     *
     * Throws std::bad_alloc.
     */
    RtsHashTag(int bucketCount, bool copyKeys, std::uint32_t expectedNames = 0);

    RtsHashTag(RtsHashTag const&) = delete;
    RtsHashTag& operator=(RtsHashTag const&) = delete;
    RtsHashTag(RtsHashTag&&) = delete;
    RtsHashTag& operator=(RtsHashTag&&) = delete;
    ~RtsHashTag() = default;

    [[nodiscard]] int bucketCount() const noexcept { return bucketCount_; }
    [[nodiscard]] bool copiesKeys() const noexcept { return copyKeys_ != 0; }

    /** First node of a chain, or null when it is empty. @p bucket is 0 to bucketCount() - 1. */
    [[nodiscard]] RtsHashNode const* chain(int bucket) const noexcept {
        return buckets_[static_cast<std::size_t>(bucket)].head;
    }

    /**
     * Adds a name at the end of its chain.
     *
     * False, with the index unchanged, when the name is null or already there, when the bucket count is 0 or when
     * memory runs out.
     */
    bool add(char const* key, void* value) noexcept;

    /** The node of a name, or null when the name is null or unknown or the bucket count is 0. */
    RtsHashNode* find(char const* key) const noexcept;

private:
    using CaseTable = std::array<std::uint8_t, 256>;

    struct Bucket {
        RtsHashNode* head = nullptr;
        RtsHashNode* tail = nullptr;
    };

    /** A place of the open-addressed table. */
    struct Slot {
        std::uint32_t hash = 0;   ///< of the lower-case name
        std::uint32_t number = 0; ///< of the name's node, counted from 1; 0 for a free slot
    };

    [[nodiscard]] std::uint32_t hashOf(std::string_view key) const noexcept;
    [[nodiscard]] std::size_t bucketOf(char const* key) const noexcept;
    [[nodiscard]] bool isSameName(char const* key, char const* other) const noexcept;
    [[nodiscard]] bool isEqualWithoutCase(char const* a, char const* b) const noexcept;
    /** The slot that holds a name, else the free one where it belongs. There must be slots. */
    [[nodiscard]] std::size_t slotFor(char const* key, std::uint32_t hash) const noexcept;
    [[nodiscard]] RtsHashNode& nodeAt(std::uint32_t number) const noexcept;
    RtsHashNode& newNode();
    void appendToChain(RtsHashNode& node) noexcept;
    void makeRoom();

    int bucketCount_;
    std::uint8_t copyKeys_;
    std::unique_ptr<Bucket[]> buckets_;

    CaseTable lower_{};
    CaseTable upper_{};
    bool equalNamesShareBucket_ = true; ///< false in a locale that pairs cases one way only
    std::uint32_t multiplier_;          ///< odd; different for each index, so that nobody can construct a file whose
                                        ///< names collide
    std::uint32_t nameCount_ = 0;
    std::vector<Slot> slots_; ///< their number is a power of two, at most two thirds are used
    std::vector<std::unique_ptr<RtsHashNode[]>> nodeBlocks_;
    TextPool keys_; ///< the copied keys
};

} // namespace _VELK
