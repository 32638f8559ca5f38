#pragma once

#include <cstddef>
#include <string_view>

/**
 * Appends text to a caller's buffer that may be too small: text that does not fit is dropped.
 *
 * Never writes outside the buffer; a null buffer or a size that is not positive holds nothing.
 */
class BoundedText {
public:
    BoundedText(char* buffer, int size) noexcept;

    /** Appends as much of @p text as fits. */
    void append(std::string_view text) noexcept;

    /** Appends a number in decimal. */
    void appendNumber(int number) noexcept;

    /** Appends a zero-terminated text; a null pointer appends nothing and stops every later append. */
    void appendName(char const* name) noexcept;

    /** Puts a zero after the text if there is room; the zero is not part of the text. */
    void terminate() noexcept;

    /** Bytes of text so far. */
    [[nodiscard]] int length() const noexcept;

    /** Bytes that are still free. */
    [[nodiscard]] int remaining() const noexcept;

private:
    char* buffer_;
    std::size_t size_;
    std::size_t length_ = 0;
    bool stopped_ = false;
};
