#pragma once

#include "plc/program/ProgramDescription.h"
#include "plc/program/TypeText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace plc {

/// The kind of a data type.
enum class TypeKind : std::uint8_t {
    kBool,
    kByte,
    kSint,
    kUsint,
    kInt,
    kUint,
    kWord,
    kDint,
    kUdint,
    kDword,
    kReal,
    kLreal,
    kLint,
    kUlint,
    kTime,
    kString,
    kBit,
    kArray,
    kStructure
};

struct Member {
    std::string name{};
    std::size_t type = 0;     ///< position in the table
    std::uint32_t offset = 0; ///< in bytes, from the start of the structure
};

/// A type with its place in memory. Everything is naturally aligned; a structure is filled up to its alignment.
struct DataType {
    TypeKind kind = TypeKind::kBool;
    std::string name{};     ///< as in the symbol file: INT, STRING(20), ARRAY [0..9] OF INT, a structure's own name
    std::uint32_t size = 0; ///< of a value, in bytes
    std::uint32_t alignment = 1;
    std::size_t element = 0;             ///< arrays: position of the element type in the table
    std::vector<Dimension> dimensions{}; ///< arrays
    std::vector<Member> members{};       ///< structures
};

/// The types of a program, each once; the parts of a type always come before the type itself.
class TypeTable {
public:
    /// Throws DescriptionError for invalid structures.
    explicit TypeTable(std::vector<StructureDescription> structures);

    /// The type that the text names, created when it is new. Names are not case-sensitive. Throws DescriptionError with
    /// the given line.
    std::size_t typeOf(std::string_view text, int line);

    [[nodiscard]] DataType const& operator[](std::size_t position) const { return types_[position]; }
    [[nodiscard]] std::size_t size() const { return types_.size(); }

private:
    struct Known {
        StructureDescription description{};
        bool underWay = false; ///< its members are being created: it must not contain itself
    };

    [[nodiscard]] std::size_t add(DataType type);
    [[nodiscard]] std::size_t elementaryType(std::string_view text, int line);
    [[nodiscard]] std::size_t arrayType(std::string_view text, int line);
    [[nodiscard]] std::size_t structureType(Known& known, int line);
    [[nodiscard]] Known* knownStructure(std::string_view name);

    std::vector<Known> structures_;
    std::vector<DataType> types_;
};

} // namespace plc
