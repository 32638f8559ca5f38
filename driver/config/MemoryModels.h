#pragma once

class MemoryManager;

namespace _VELK {

/** Adds the driver's models "Intel" and "Motorola", each with its ten memory types. May throw std::bad_alloc. */
void registerModels(MemoryManager& manager);

} // namespace _VELK
