#pragma once

#include "plc/program/BehaviourDescription.h"
#include "plc/program/Value.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace plc {

/// The number of memory areas: 0 M, 1 I, 2 Q, and 3, 4, 5 without a letter.
inline constexpr std::size_t kAreaCount = 6;

/// A step from a variable to a part of it: an element's position, counted from 0 over all dimensions with the last one
/// running fastest, or a member's name.
using PartStep = std::variant<std::size_t, std::string>;

/// The initial value of an element or a member.
struct PartValue {
    std::vector<PartStep> way{};
    Value value;
};

/**
 * A variable of a PLC program.
 *
 * Types are written as in the program's source: BIT BOOL BYTE SINT USINT INT UINT WORD DINT UDINT DWORD REAL LREAL
 * LINT ULINT TIME, STRING(n) for n characters (n + 1 bytes; STRING alone is STRING(80)), the name of a structure, and
 * `ARRAY [0..9] OF INT`, also with several dimensions and of structures. BOOL takes a byte; BIT is a BOOL in a single
 * bit, and its offset counts bits, in the description, in the symbol file and in requests. TIME is 4 bytes of
 * milliseconds.
 */
struct VariableDescription {
    std::string name{}; ///< with dots, for example PLC_PRG.Counter
    std::string type{};
    std::uint16_t area = 0;
    std::optional<std::uint32_t> offset{}; ///< in bytes, bits for BIT; without it the next free one, naturally aligned
    std::optional<Value> value{};          ///< the initial value; without it all bytes are 0
    std::vector<PartValue> parts{};        ///< of arrays and structures: the initial values of parts
    std::uint16_t flags = 0;               ///< the two flag bytes of the symbol file, low byte first
    bool listedOnly = false; ///< only in the symbol file: it has no memory, and area and offset are not checked
    int line = 0;            ///< its line in the description file; 0 when written in code
};

struct MemberDescription {
    std::string name{};
    std::string type{}; ///< anything but BIT
};

struct StructureDescription {
    std::string name{};
    std::vector<MemberDescription> members{};
    int line = 0;
};

/// Unusual but valid forms of the symbol file, to test its readers.
struct SymbolFileForm {
    std::uint32_t variant = 0;     ///< the header's format variant, 0 or 1
    std::uint32_t headerExtra = 0; ///< bytes between the 16-byte header and the first section
    bool foreignSections = false;  ///< a section of an unknown kind before each of the two that matter
    bool placeholders = false;     ///< a record of an unknown kind at the start of both sections
    bool spacedNames = false;      ///< variable records with two bytes before the name and two after it
};

struct ProgramDescription {
    std::uint32_t projectId = 1;
    std::vector<StructureDescription> structures{};
    std::vector<VariableDescription> variables{};
    std::vector<BehaviourDescription> behaviours{};                                      ///< in the order of execution
    std::array<std::uint32_t, kAreaCount> areaSizes{4096, 1024, 1024, 1024, 1024, 1024}; ///< in bytes
    SymbolFileForm symbolFile{};
};

/// An invalid description. `line()` is the line of the description file, 0 when there is none.
class DescriptionError : public std::runtime_error {
public:
    DescriptionError(std::string const& text, int line) : std::runtime_error(text), line_(line) {}
    [[nodiscard]] int line() const { return line_; }

private:
    int line_;
};

} // namespace plc
