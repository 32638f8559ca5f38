#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace _VELK {

/**
 * Many small pieces of text or raw bytes that are freed together.
 *
 * Pieces are cut from a few large chunks, so that thousands of names do not each need an allocation and its overhead. A
 * piece keeps its address until clear() or the end of the pool; moving the pool does not move them.
 */
class TextPool {
public:
    /** A new, uninitialised piece of @p size bytes, without alignment. Throws std::bad_alloc. */
    std::span<char> take(std::size_t size);

    /** A zero-terminated copy of @p text. Throws std::bad_alloc. */
    char const* copy(char const* text);

    /** Releases every piece. */
    void clear() noexcept;

private:
    std::vector<std::unique_ptr<char[]>> chunks_;
    std::span<char> rest_; ///< the free rest of the newest shared chunk
};

} // namespace _VELK
