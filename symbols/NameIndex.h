#pragma once

#include "symbols/TextPool.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace _VELK {

/** One name of an index, a link of its bucket's chain. */
struct RtsHashNode {
    char const* key = nullptr;
    void* value = nullptr;       ///< not owned, not looked at
    RtsHashNode* next = nullptr; ///< the name added to the same bucket after this one, or null
};

/**
 * An index of names that does not see case: names that differ only in case are one name, and the first one added
 * stays.
 *
 * Bucket of a name: the upper-case forms (toupper) of its bytes are added up as a signed 32-bit integer; the bucket
 * is the absolute value of the sum's remainder by the bucket count, so the empty name is in bucket 0. A new name
 * goes to the end of its bucket's chain. Two names are equal when they have the same length and the same lower-case
 * forms (tolower) byte for byte.
 *
 * The names of a PLC program often differ in digits only, so that their sums share a few buckets and chains grow
 * long. Adding and finding therefore do not walk the chains: a second, open-addressed table leads from a hash of the
 * lower-case name straight to its node. It answers exactly what a walk through the name's chain would answer.
 *
 * Case follows the C library's locale at the time when the index was made. Not safe for use from several threads.
 */
class RtsHashTag {
public:
    /**
     * @param bucketCount fixed for the life of the index; 0 or less makes one that refuses every name
     * @param copyKeys true: names are copied and owned by the index; false: the caller's pointers are kept and must
     *        stay valid as long as the index
     * @param expectedNames how many names will be added, to allocate once; more is allowed
     *
     * Throws std::bad_alloc.
     */
    RtsHashTag(int bucketCount, bool copyKeys, std::size_t expectedNames = 0);

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
     * False, and the index is as before, when the name is null or already there, when the bucket count is 0 or when
     * memory runs out.
     */
    bool add(char const* key, void* value) noexcept;

    /** The node of a name, or null when the name is null or unknown or the bucket count is 0. */
    RtsHashNode* find(char const* key) const noexcept;

private:
    using CaseTable = std::array<std::uint8_t, 256>;

    /** What one pass over a name yields. */
    struct Digest {
        std::uint32_t hash = 0;     ///< of the lower-case name, for the open-addressed table
        std::uint32_t upperSum = 0; ///< sum of the upper-case bytes modulo 2^32
    };

    struct Bucket {
        RtsHashNode* head = nullptr;
        RtsHashNode* tail = nullptr;
    };

    /** A place of the open-addressed table; free while node is null. */
    struct Slot {
        std::uint32_t hash = 0;
        RtsHashNode* node = nullptr;
    };

    Digest digest(char const* key) const noexcept;
    [[nodiscard]] std::size_t bucketOf(std::uint32_t upperSum) const noexcept;
    bool isSameName(char const* key, std::uint32_t upperSum, char const* other) const noexcept;
    std::size_t slotFor(char const* key, Digest const& digest) const noexcept; ///< the name's slot, else a free one
    RtsHashNode* appendToChain(char const* key, void* value, std::size_t bucketNumber);
    void makeRoom();
    RtsHashNode* newNode();
    void addNodeBlock(std::size_t size);

    int bucketCount_;
    std::uint8_t copyKeys_;
    std::unique_ptr<Bucket[]> buckets_;

    CaseTable lower_{};
    CaseTable upper_{};
    std::uint32_t multiplier_; ///< odd; another for each index, so that no file can be made to collide
    std::size_t nameCount_ = 0;
    std::vector<Slot> slots_; ///< a power of two of them, at most two thirds used
    std::vector<std::unique_ptr<RtsHashNode[]>> nodeBlocks_;
    std::size_t nodesLeft_ = 0; ///< unused nodes at the end of the newest block
    TextPool keys_;             ///< the copied keys
};

} // namespace _VELK
