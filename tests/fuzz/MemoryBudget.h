#pragma once

#include <cstddef>

namespace velktest {

/**
 * Ends the program when, during its lifetime, memory use grows by more than its budget: a small input must not cause a
 * large use of memory. Works only with the address sanitizer, which counts the memory; otherwise it has no effect.
 */
class MemoryBudget {
public:
    explicit MemoryBudget(std::size_t bytes);
    ~MemoryBudget();
    MemoryBudget(MemoryBudget const&) = delete;
    MemoryBudget& operator=(MemoryBudget const&) = delete;
};

} // namespace velktest
