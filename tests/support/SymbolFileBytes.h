#pragma once

#include "tests/support/Bytes.h"

#include <string>

namespace velktest {

/** Builds the bytes of a PLC's symbol file: one simple data type, and variables of it. */
class SymbolFileBytes {
public:
    explicit SymbolFileBytes(std::uint32_t projectId) : projectId_(projectId) {}

    /** A variable of @p area (0 "M", 1 "I", 2 "Q", 3, 4, 5) at @p offset. */
    SymbolFileBytes& Variable(std::string const& name, unsigned area, std::uint32_t offset) {
        Bytes const zeroTerminated = Text(name) + Hex("00");
        Bytes const record = Little(5, 4) + Little(26 + zeroTerminated.size(), 4) + Little(0, 4) + Little(0, 4) +
                             Hex("01 02") + Little(area, 2) + Little(offset, 4) + Little(zeroTerminated.size(), 2) +
                             zeroTerminated;
        variables_.insert(variables_.end(), record.begin(), record.end());
        ++count_;
        return *this;
    }

    Bytes Build() const {
        Bytes const type =
            Little(4, 4) + Little(18 + 4, 4) + Little(2, 4) + Little(2, 4) + Little(4, 2) + Text("INT") + Hex("00");
        return Little(1, 4) + Little(16, 4) + Little(0, 4) + Little(projectId_, 4) + //
               Little(2, 4) + Little(16 + type.size(), 4) + Little(0, 4) + Little(1, 4) + type + Little(3, 4) +
               Little(16 + variables_.size(), 4) + Little(0, 4) + Little(count_, 4) + variables_;
    }

private:
    std::uint32_t projectId_;
    Bytes variables_;
    std::uint32_t count_ = 0;
};

} // namespace velktest
