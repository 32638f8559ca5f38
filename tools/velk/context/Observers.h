#pragma once

#include "host/serial/PortObserver.h"

#include <vector>

namespace velk {

/** Shows a port to any number of observers, in the order of attachment. */
class Observers : public host::PortObserver {
public:
    /** @p observer must outlive this object or be detached. */
    void attach(host::PortObserver& observer);
    void detach(host::PortObserver& observer);

    void onFrame(host::PortFrame const& frame) override;
    void onTimeout(std::int64_t at) override;
    void onDropped(std::span<unsigned char const> bytes, std::int64_t at) override;
    void onUnsent(std::span<unsigned char const> bytes) override;
    void onFault(std::string_view reason, std::int64_t at) override;

private:
    std::vector<host::PortObserver*> observers_;
};

/** Attaches an observer while it lives. */
class Attachment {
public:
    Attachment(Observers& observers, host::PortObserver& observer) : observers_(observers), observer_(observer) {
        observers_.attach(observer_);
    }
    ~Attachment() { observers_.detach(observer_); }
    Attachment(Attachment const&) = delete;
    Attachment& operator=(Attachment const&) = delete;

private:
    Observers& observers_;
    host::PortObserver& observer_;
};

} // namespace velk
