#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace _VELK {

/**
 * Reads a seekable file through its own buffer, so that many small reads and short skips cost no system call.
 *
 * Positions count from the start of the file. The caller keeps the file, which must outlive the reader. Nothing throws,
 * but a thread can be cancelled while it reads, so the reading functions are not noexcept.
 */
class SymbolFileReader {
public:
    /** @p file null or not seekable: the file counts as empty. */
    explicit SymbolFileReader(std::FILE* file);

    [[nodiscard]] std::uint64_t size() const noexcept { return size_; }
    [[nodiscard]] std::uint64_t position() const noexcept { return bufferStart_ + bufferUsed_; }
    [[nodiscard]] std::uint64_t remaining() const noexcept { return size_ - position(); }

    /** Fills all of @p bytes and moves past them; false when the file ends earlier or cannot be read. */
    bool read(std::span<std::uint8_t> bytes);

    /**
     * Moves to @p target, or to the end of the file if that is earlier: only reading there fails. False on an I/O
     * error.
     */
    bool seek(std::uint64_t target);

private:
    bool refill();

    std::FILE* file_;
    std::uint64_t size_ = 0;
    std::uint64_t bufferStart_ = 0; ///< position of the buffer's first byte
    std::size_t bufferUsed_ = 0;    ///< bytes of the buffer before the position
    std::size_t bufferFilled_ = 0;
    std::array<std::uint8_t, 4096> buffer_{};
};

} // namespace _VELK
