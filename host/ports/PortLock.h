#pragma once

#include <optional>

namespace host {

/**
 * Locks an open serial port against other programs for its lifetime.
 *
 * Two locks, because neither is enough: an advisory lock on the device, which binds every program that checks for it,
 * including the superuser's, and the terminal's exclusive mode, which makes opening fail for everybody but the
 * superuser. The advisory lock ends with the descriptor, which must outlive this object.
 */
class PortLock {
public:
    /**
     * @param exclusiveMode also use the terminal's exclusive mode
     * @return nothing when the port is taken, or when locking fails; errno has the reason (EWOULDBLOCK: taken)
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
