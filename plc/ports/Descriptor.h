#pragma once

#include <string_view>

namespace plc {

/// Owns a file descriptor.
class Descriptor {
public:
    /// Throws std::system_error with `what` when the descriptor is negative, from errno.
    Descriptor(int descriptor, std::string_view what);
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor();

    [[nodiscard]] int get() const { return descriptor_; }

private:
    int descriptor_;
};

/// Throws std::system_error from errno.
[[noreturn]] void throwSystemError(std::string_view what);

} // namespace plc
