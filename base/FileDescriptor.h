#pragma once

#include <string_view>

namespace base {

/** Owns an open file descriptor; -1 means none. */
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor();
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(FileDescriptor const&) = delete;
    FileDescriptor& operator=(FileDescriptor const&) = delete;

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    void close();

private:
    int descriptor_ = -1;
};

/**
 * Takes ownership of a descriptor that was just opened. Throws std::system_error with errno and @p what when opening
 * failed.
 */
[[nodiscard]] FileDescriptor openedOrThrow(int descriptor, std::string_view what);

} // namespace base
