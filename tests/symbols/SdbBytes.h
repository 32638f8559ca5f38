#pragma once

#include "tests/support/Bytes.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

/** A symbol file, built field by field; all numbers little-endian. */
class SdbBytes {
public:
    SdbBytes& u16(std::uint32_t value) { return byte(value).byte(value >> 8U); }
    SdbBytes& u32(std::uint32_t value) { return u16(value).u16(value >> 16U); }
    SdbBytes& hex(std::string_view digits) {
        auto const more = velktest::Hex(digits);
        bytes_.insert(bytes_.end(), more.begin(), more.end());
        return *this;
    }
    /** The characters, without a terminating zero. */
    SdbBytes& text(std::string_view characters) {
        bytes_.insert(bytes_.end(), characters.begin(), characters.end());
        return *this;
    }

    /** The file header of 16 bytes. */
    SdbBytes& fileHeader(std::uint32_t projectId = 0x11223344, std::uint32_t headerLength = 16,
                         std::uint32_t format = 1, std::uint32_t variant = 0) {
        return u32(format).u32(headerLength).u32(variant).u32(projectId);
    }

    /** A section header of 16 bytes. */
    SdbBytes& section(std::uint32_t kind, std::uint32_t length, std::uint32_t recordCount) {
        return u32(kind).u32(length).u32(0xA1A2A3A4).u32(recordCount);
    }

    /** A section that the parser skips, of 16 + @p content bytes. */
    SdbBytes& otherSection(std::uint32_t kind, std::uint32_t content) {
        section(kind, 16 + content, 7);
        for (std::uint32_t i = 0; i < content; ++i) {
            byte(0xEE);
        }
        return *this;
    }

    /** Fixed part of a data-type record. */
    SdbBytes& typeRecord(std::uint32_t kind, std::uint32_t length, std::uint32_t typeClass, std::uint32_t size,
                         std::uint32_t nameLength) {
        return u32(kind).u32(length).u32(typeClass).u32(size).u16(nameLength);
    }

    /** A whole data type without an extra; its name gets its terminating zero. */
    SdbBytes& simpleType(std::string_view name, std::uint32_t typeClass, std::uint32_t size) {
        auto const n = static_cast<std::uint32_t>(name.size()) + 1;
        return typeRecord(4, 18 + n, typeClass, size, n).text(name).byte(0);
    }

    /** A whole structure, or a type of the classes 13 and 23: the name and four bytes. */
    SdbBytes& typeWithFourBytes(std::string_view name, std::uint32_t typeClass, std::uint32_t size) {
        auto const n = static_cast<std::uint32_t>(name.size()) + 1;
        return typeRecord(4, 18 + n + 4, typeClass, size, n).text(name).byte(0).u32(0xC1C2C3C4);
    }

    /** A whole array. */
    SdbBytes& arrayType(std::string_view name, std::uint32_t size, std::uint32_t elementType,
                        std::uint32_t dimensions = 1) {
        auto const n = static_cast<std::uint32_t>(name.size()) + 1;
        typeRecord(4, 18 + n + 8 + 8 * dimensions, 9, size, n).text(name).byte(0).u32(elementType).u32(dimensions);
        for (std::uint32_t i = 0; i < dimensions; ++i) {
            u32(1).u32(10);
        }
        return *this;
    }

    /** Fixed part of a variable record. */
    SdbBytes& variableRecord(std::uint32_t kind, std::uint32_t length, std::uint32_t typeNumber, std::uint32_t area,
                             std::uint32_t offset, std::uint32_t nameLength) {
        return u32(kind).u32(length).u32(typeNumber).u32(0xB1B2B3B4).hex("F1 F2").u16(area).u32(offset).u16(nameLength);
    }

    /** A whole variable without a gap before its name. */
    SdbBytes& variable(std::string_view name, std::uint32_t typeNumber = 0, std::uint32_t area = 0,
                       std::uint32_t offset = 0) {
        auto const n = static_cast<std::uint32_t>(name.size()) + 1;
        return variableRecord(5, 26 + n, typeNumber, area, offset, n).text(name).byte(0);
    }

    SdbBytes& byte(std::uint32_t value) {
        bytes_.push_back(static_cast<unsigned char>(value & 0xFFU));
        return *this;
    }

    velktest::Bytes const& bytes() const { return bytes_; }
    std::uint32_t size() const { return static_cast<std::uint32_t>(bytes_.size()); }

    /** A file header and one type INT: the start of most files. The variable section follows. */
    static SdbBytes withInt() {
        SdbBytes file;
        return file.fileHeader().section(2, 16 + 22, 1).simpleType("INT", 3, 2);
    }

private:
    velktest::Bytes bytes_;
};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

/** An open file with that content, positioned at its start; it has no name. */
inline OpenFile openFile(velktest::Bytes const& content) {
    OpenFile file(std::tmpfile());
    if (file != nullptr && !content.empty() &&
        std::fwrite(content.data(), 1, content.size(), file.get()) != content.size()) {
        file.reset();
    }
    if (file != nullptr) {
        std::rewind(file.get());
    }
    return file;
}
