#include "protlib/safety/BoundedText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

BoundedText::BoundedText(char* buffer, int size) noexcept
    : buffer_(buffer), size_(buffer == nullptr || size < 0 ? 0 : static_cast<std::size_t>(size)) {}

void BoundedText::append(std::string_view text) noexcept {
    if (stopped_) {
        return;
    }
    auto const count = std::min(text.size(), size_ - length_);
    std::copy_n(text.data(), count, buffer_ + length_);
    length_ += count;
}

void BoundedText::appendNumber(int number) noexcept {
    std::array<char, std::numeric_limits<int>::digits10 + 2> digits{}; // one digit more than digits10, and a sign
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    append({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void BoundedText::appendName(char const* name) noexcept {
    if (name == nullptr) {
        stopped_ = true;
    } else {
        append(name);
    }
}

void BoundedText::terminate() noexcept {
    if (length_ < size_) {
        buffer_[length_] = '\0';
    }
}

int BoundedText::length() const noexcept {
    return static_cast<int>(length_);
}

int BoundedText::remaining() const noexcept {
    return static_cast<int>(size_ - length_);
}
