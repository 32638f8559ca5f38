#pragma once

#include <cstdint>
#include <string>

/** Splits tag addresses. Pure code; Tag_VELK gives the parts their meaning for a node. */
namespace _VELK {

/** Fields of a tag address `nodeid?tagname?addressSpace?offset?datatype`, without blanks and tabs around them. */
struct TagAddress {
    std::string node;         ///< may be empty
    std::string variable;     ///< name of the PLC variable; "/" means "."
    std::string addressSpace; ///< name of a memory type
    std::string offset;       ///< "0" when it is empty in the address
    std::string dataType;
};

/** Splits an address. Null on success, else why the address is refused. */
char const* splitTagAddress(std::string const& address, TagAddress& fields);

/** The two numbers of an offset field, as far as 64 bits hold them. */
struct TagOffset {
    std::int64_t index = 0;
    std::int64_t subindex = 0;
};

/** Reads `index` or `index.subindex`: "0x" introduces hexadecimal, a leading "0" octal; no number is 0. */
TagOffset readTagOffset(std::string const& offset);

} // namespace _VELK
