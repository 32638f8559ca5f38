#pragma once

#include <optional>

namespace host {

/**
 * Keeps other programs off an open serial port while it lives.
 *
 * Two locks, because neither is enough: an advisory lock on the device, which every program that asks for it
 * honours and the superuser too, and the terminal's exclusive mode, which makes opening fail for everybody but the
 * superuser. The advisory lock ends with the descriptor, which must outlive this object.
 */
class PortLock {
public:
    /**
     * @param exclusiveMode also use the terminal's exclusive mode
     * @return nothing when the port is taken, or when locking fails; errno tells (EWOULDBLOCK: taken)
     */
    static std::optional<PortLock> take(int descriptor, bool exclusiveMode);

    ~PortLock();
    PortLock(PortLock&& other) noexcept;
    PortLock& operator=(PortLock&&) = delete;
    PortLock(PortLock const&) = delete;
    PortLock& operator=(PortLock const&) = delete;

private:
    explicit PortLock(int exclusiveDescriptor) : exclusiveDescriptor_(exclusiveDescriptor) {}

    int exclusiveDescriptor_; ///< -1: not in exclusive mode
};

} // namespace host
