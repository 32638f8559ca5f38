#include "host/services/Scheduler.h"

#include "host/services/InterfaceNames.h"

#include <utility>

namespace host {

Scheduler::Scheduler(std::function<void(std::uint64_t)> hook) : hook_(std::move(hook)) {}

IInterface* Scheduler::ConvertTo(char const* name) {
    return isOneOf(name, {"Scheduler", "IMultiTask2"}) ? this : nullptr;
}

char const* Scheduler::GetImpName() const {
    return "Scheduler";
}

int Scheduler::GetImpVersion() const {
    return 100;
}

void Scheduler::Yield(int /*amount*/) {
    ++yields_;
    if (!hook_) {
        return;
    }
    try {
        hook_(yields_);
    } catch (...) {
        hook_ = nullptr; // no exception may reach the module
    }
}

} // namespace host
