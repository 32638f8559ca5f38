#include "symbols/TextPool.h"

#include <cstring>
#include <utility>

namespace _VELK {

namespace {

constexpr std::size_t kChunkSize = 16'384;
constexpr std::size_t kLargestSharedPiece = kChunkSize / 8; // larger pieces get a separate chunk

} // namespace

std::span<char> TextPool::take(std::size_t size) {
    if (size > rest_.size()) {
        bool const shared = size <= kLargestSharedPiece;
        std::size_t const chunkSize = shared ? kChunkSize : size;
        std::unique_ptr<char[]> chunk(new char[chunkSize]);
        std::span<char> const fresh(chunk.get(), chunkSize);
        chunks_.push_back(std::move(chunk));
        if (!shared) {
            return fresh;
        }
        rest_ = fresh;
    }
    std::span<char> const piece = rest_.first(size);
    rest_ = rest_.subspan(size);
    return piece;
}

char const* TextPool::copy(char const* text) {
    std::size_t const size = std::strlen(text) + 1;
    std::span<char> const piece = take(size);
    std::memcpy(piece.data(), text, size);
    return piece.data();
}

void TextPool::clear() noexcept {
    rest_ = {};
    chunks_.clear();
    chunks_.shrink_to_fit();
}

} // namespace _VELK
