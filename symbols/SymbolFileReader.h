#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace _VELK {

/**
 * Reads a seekable file through a buffer of its own, so that many small reads and short skips cost no system call.
 *
 * Positions count from the start of the file. The file stays the caller's and must outlive the reader. Nothing throws,
 * but a thread can be cancelled while it reads, so what reads is not noexcept.
 */
class SymbolFileReader {
public:
    /** @p file null or not seekable: the file counts as empty. */
    explicit SymbolFileReader(std::FILE* file);

    [[nodiscard]] std::uint64_t size() const noexcept { return size_; }
    [[nodiscard]] std::uint64_t position() const noexcept { return bufferStart_ + bufferUsed_; }
    [[nodiscard]] std::uint64_t remaining() const noexcept { return size_ - position(); }

    /** Fills all of @p bytes and moves behind them; false when the file ends before or cannot be read. */
    bool read(std::span<std::uint8_t> bytes);

    /** Goes to @p target, behind the end of the file to its end: only reading there fails. False at a failure of I/O.
     */
    bool seek(std::uint64_t target);

private:
    bool refill();

    std::FILE* file_;
    std::uint64_t size_ = 0;
    std::uint64_t bufferStart_ = 0; ///< position of the buffer's first byte
    std::size_t bufferUsed_ = 0;    ///< bytes of the buffer that lie before the position
    std::size_t bufferFilled_ = 0;
    std::array<std::uint8_t, 4096> buffer_{};
};

} // namespace _VELK
