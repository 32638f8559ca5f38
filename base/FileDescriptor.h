#pragma once

#include <string_view>

namespace base {

/** Owns an open file descriptor; -1 stands for none. */
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

/** Owns what was just opened. Throws std::system_error with what errno says and @p what when that failed. */
[[nodiscard]] FileDescriptor openedOrThrow(int descriptor, std::string_view what);

} // namespace base
