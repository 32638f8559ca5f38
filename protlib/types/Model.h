#pragma once

#include "protlib/types/MemoryType.h"

#include <string>
#include <vector>

/** A variant of a PLC ("Intel" or "Motorola" byte order) with its datagram limits and its address spaces. */
class Model {
public:
    explicit Model(std::string name);

    [[nodiscard]] std::string const& getName() const;

    [[nodiscard]] int getMaxDatagramLength() const; ///< bytes; 0 until set
    void setMaxDatagramLength(int length);

    [[nodiscard]] int getMaxDatagramItems() const; ///< 0 until set
    void setMaxDatagramItems(int items);

    /** Appends a copy. False, with nothing added, when there is already one of the same name. */
    bool addMemoryType(MemoryType const& type);

    /** The memory type called exactly @p name, or null. Valid until the next one is added. */
    [[nodiscard]] MemoryType const* getMemoryType(std::string const& name) const;

private:
    std::string name_;
    int maxDatagramItems_ = 0;
    int maxDatagramLength_ = 0;
    std::vector<MemoryType> memoryTypes_;
};
