#pragma once

#include <cstddef>

namespace velktest {

/**
 * Ends the program when, while it lives, more memory than its budget is in use beyond what was before: an input must
 * not be able to multiply itself. Looks only where the address sanitizer counts for it, else it has no effect.
 */
class MemoryBudget {
public:
    explicit MemoryBudget(std::size_t bytes);
    ~MemoryBudget();
    MemoryBudget(MemoryBudget const&) = delete;
    MemoryBudget& operator=(MemoryBudget const&) = delete;
};

} // namespace velktest
