#pragma once

#include <cstddef>

/**
 * Counts, and on demand refuses, the allocations of the code under test.
 *
 * The replaced operators new are in AllocationGate.cpp; without it a gate has no effect. Only what happens between a
 * gate's construction and destruction counts. The fakes that the code under test calls back into hold an
 * AllocationPause, so that their own memory is not counted.
 */
namespace velktest {

struct AllocationState {
    bool open = false;
    int pauses = 0;
    std::size_t seen = 0;     ///< allocations while open
    std::size_t freed = 0;    ///< releases while open
    std::size_t refuseAt = 0; ///< the number of the allocation that fails, counted from 1; 0 for none
    bool refuseAllAfter = false;
    bool refused = false;
};

inline AllocationState& Allocations() {
    static thread_local AllocationState state;
    return state;
}

class AllocationPause {
public:
    AllocationPause() { ++Allocations().pauses; }
    ~AllocationPause() { --Allocations().pauses; }
    AllocationPause(AllocationPause const&) = delete;
    AllocationPause& operator=(AllocationPause const&) = delete;
};

/** Counts allocations during its lifetime. */
class AllocationGate {
public:
    explicit AllocationGate(std::size_t refuseAt = 0, bool refuseAllAfter = false) {
        Allocations() = {true, 0, 0, 0, refuseAt, refuseAllAfter, false};
    }
    ~AllocationGate() { Allocations().open = false; }
    AllocationGate(AllocationGate const&) = delete;
    AllocationGate& operator=(AllocationGate const&) = delete;

    static std::size_t Seen() { return Allocations().seen; }
    static std::size_t Freed() { return Allocations().freed; }
    static bool Refused() { return Allocations().refused; }
};

} // namespace velktest
