#pragma once

#include "tests/support/Bytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>

namespace velktest {

/** Ends the program when a condition is false, so that the fuzzer keeps the input. */
inline void Require(bool holds, char const* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

/** The fuzzer's input, taken from the front. After its end come zeros, which should select normal behaviour. */
class FuzzInput {
public:
    FuzzInput(std::uint8_t const* data, std::size_t size) : rest_(data, size) {}

    [[nodiscard]] bool AtEnd() const { return rest_.empty(); }
    void Drop() { rest_ = {}; }

    unsigned Byte() {
        if (rest_.empty()) {
            return 0;
        }
        unsigned const byte = rest_.front();
        rest_ = rest_.subspan(1);
        return byte;
    }
    unsigned Word() {
        unsigned const low = Byte();
        return low | Byte() << 8U;
    }
    /** A number below @p end, which is 256 at most. */
    unsigned Below(std::size_t end) { return Byte() % static_cast<unsigned>(end); }
    bool Flag() { return Byte() % 2 != 0; }

    template <typename Table>
    auto const& Pick(Table const& table) {
        return table[Below(std::size(table))];
    }

    /** @p count bytes, or as many as are left. */
    Bytes Take(std::size_t count) {
        auto const taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return {taken.begin(), taken.end()};
    }
    /** Up to the next @p end, which is dropped, or all that is left. */
    std::string Text(char end) {
        auto const stop = std::find(rest_.begin(), rest_.end(), static_cast<std::uint8_t>(end));
        std::string text(rest_.begin(), stop);
        rest_ = rest_.subspan(std::min(text.size() + 1, rest_.size()));
        return text;
    }

private:
    std::span<std::uint8_t const> rest_;
};

/** Memory of an exact size, so that the address sanitizer notices the first access after its end. */
class ExactBuffer {
public:
    explicit ExactBuffer(std::size_t size, unsigned char fill = 0xCC) : bytes_(new unsigned char[size]), size_(size) {
        std::fill_n(bytes_.get(), size, fill);
    }
    explicit ExactBuffer(Bytes const& bytes) : ExactBuffer(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), bytes_.get());
    }

    unsigned char* Data() { return bytes_.get(); }
    [[nodiscard]] unsigned char const* Data() const { return bytes_.get(); }
    [[nodiscard]] std::size_t Size() const { return size_; }
    [[nodiscard]] Bytes Copy() const { return {bytes_.get(), bytes_.get() + size_}; }

private:
    std::unique_ptr<unsigned char[]> bytes_;
    std::size_t size_;
};

} // namespace velktest
