#include "tools/velk/context/Observers.h"

namespace velk {
namespace {

/** An exception of one observer does not affect the others. */
template <typename Tell>
void tellEach(std::vector<host::PortObserver*> const& observers, Tell&& tell) {
    for (host::PortObserver* const observer : observers) {
        try {
            tell(*observer);
        } catch (...) { // NOLINT(bugprone-empty-catch): an observer never disturbs an exchange
        }
    }
}

} // namespace

void Observers::attach(host::PortObserver& observer) {
    observers_.push_back(&observer);
}

void Observers::detach(host::PortObserver& observer) {
    std::erase(observers_, &observer);
}

void Observers::onFrame(host::PortFrame const& frame) {
    tellEach(observers_, [&](host::PortObserver& observer) { observer.onFrame(frame); });
}

void Observers::onTimeout(std::int64_t at) {
    tellEach(observers_, [&](host::PortObserver& observer) { observer.onTimeout(at); });
}

void Observers::onDropped(std::span<unsigned char const> bytes, std::int64_t at) {
    tellEach(observers_, [&](host::PortObserver& observer) { observer.onDropped(bytes, at); });
}

void Observers::onUnsent(std::span<unsigned char const> bytes) {
    tellEach(observers_, [&](host::PortObserver& observer) { observer.onUnsent(bytes); });
}

void Observers::onFault(std::string_view reason, std::int64_t at) {
    tellEach(observers_, [&](host::PortObserver& observer) { observer.onFault(reason, at); });
}

} // namespace velk
