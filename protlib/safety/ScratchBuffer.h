#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace ProtUtilsN {

/**
 * Longest scratch buffer in bytes, far above what any PLC can exchange.
 *
 * The length comes from a tag address. Without a limit, a mistyped one would fill the panel's memory with zeros before
 * the driver could refuse it.
 */
inline constexpr std::int64_t kLongestScratch = std::int64_t{16} * 1024 * 1024;

/**
 * A zero-filled buffer for the length of one call: on the stack up to @p kOnStack bytes, on the heap above that.
 *
 * Never throws: available() is false when there is no memory, or when the length is negative or above kLongestScratch.
 */
template <std::size_t kOnStack>
class ScratchBuffer {
public:
    explicit ScratchBuffer(std::int64_t length) noexcept {
        if (length < 0 || length > kLongestScratch) {
            return;
        }
        auto const size = static_cast<std::size_t>(length);
        if (size <= kOnStack) {
            bytes_ = std::span(stack_).first(size);
            available_ = true;
        } else {
            heap_.reset(new (std::nothrow) unsigned char[size]);
            available_ = heap_ != nullptr;
            bytes_ = std::span(heap_.get(), available_ ? size : 0);
        }
        std::fill(bytes_.begin(), bytes_.end(), static_cast<unsigned char>(0));
    }

    ScratchBuffer(ScratchBuffer const&) = delete;
    ScratchBuffer& operator=(ScratchBuffer const&) = delete;
    ~ScratchBuffer() = default;

    /** False when the buffer could not be created; it is then empty. */
    [[nodiscard]] bool available() const noexcept { return available_; }

    /** The buffer, exactly as long as requested. */
    [[nodiscard]] std::span<unsigned char> bytes() noexcept { return bytes_; }

private:
    std::array<unsigned char, kOnStack> stack_; // filled only as far as it is used
    std::unique_ptr<unsigned char[]> heap_;
    std::span<unsigned char> bytes_;
    bool available_ = false;
};

} // namespace ProtUtilsN
