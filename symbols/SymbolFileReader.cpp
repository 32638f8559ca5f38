#include "symbols/SymbolFileReader.h"

#include <algorithm>
#include <cstring>

namespace _VELK {

namespace {

/** Size of a file in bytes, which is left at its start; 0 when its end cannot be found. */
std::uint64_t sizeOf(std::FILE* file) {
    if (file == nullptr || std::fseek(file, 0, SEEK_END) != 0) {
        return 0;
    }
    long const end = std::ftell(file);
    if (end < 0 || std::fseek(file, 0, SEEK_SET) != 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(end);
}

} // namespace

SymbolFileReader::SymbolFileReader(std::FILE* file) : file_(file), size_(sizeOf(file)) {}

bool SymbolFileReader::read(std::span<std::uint8_t> bytes) {
    if (bytes.size() > remaining()) {
        return false;
    }
    while (!bytes.empty()) {
        if (bufferUsed_ == bufferFilled_ && !refill()) {
            return false;
        }
        std::size_t const count = std::min(bytes.size(), bufferFilled_ - bufferUsed_);
        std::memcpy(bytes.data(), &buffer_[bufferUsed_], count);
        bufferUsed_ += count;
        bytes = bytes.subspan(count);
    }
    return true;
}

bool SymbolFileReader::seek(std::uint64_t target) {
    target = std::min(target, size_);
    if (target >= bufferStart_ && target <= bufferStart_ + bufferFilled_) {
        bufferUsed_ = static_cast<std::size_t>(target - bufferStart_);
        return true;
    }
    if (std::fseek(file_, static_cast<long>(target), SEEK_SET) != 0) {
        return false;
    }
    bufferStart_ = target;
    bufferUsed_ = 0;
    bufferFilled_ = 0;
    return true;
}

bool SymbolFileReader::refill() {
    bufferStart_ += bufferFilled_;
    bufferUsed_ = 0;
    bufferFilled_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
    return bufferFilled_ != 0;
}

} // namespace _VELK
