#include "plc/program/SymbolFileWriter.h"

#include "plc/frames/ByteOrder.h"

#include <cstdint>
#include <string_view>

namespace plc {

namespace {

constexpr std::uint32_t kFileFormat = 1;
constexpr std::uint32_t kFileHeaderSize = 16;
constexpr std::uint32_t kSectionHeaderSize = 16;

constexpr std::uint32_t kTypeSection = 2;
constexpr std::uint32_t kVariableSection = 3;
constexpr std::uint32_t kForeignSection = 7;

constexpr std::uint32_t kTypeRecord = 4;
constexpr std::uint32_t kVariableRecord = 5;
constexpr std::uint32_t kForeignRecord = 6;

constexpr std::size_t kTypeRecordSize = 18;
constexpr std::size_t kVariableRecordSize = 26;
constexpr std::size_t kRecordLengthOffset = 4;
constexpr std::size_t kSpace = 2; ///< bytes before and after a spaced name

// Readers distinguish only arrays and structures from the rest. The other classes are this simulation's own numbers;
// they avoid those with bytes after the name (13, 23) and that of placeholders (29).
constexpr std::uint32_t kArrayClass = 9;
constexpr std::uint32_t kStructureClass = 11;

std::uint32_t classOf(TypeKind kind) {
    switch (kind) {
    case TypeKind::kArray:
        return kArrayClass;
    case TypeKind::kStructure:
        return kStructureClass;
    case TypeKind::kBool:
    case TypeKind::kBit:
        return 0;
    case TypeKind::kByte:
    case TypeKind::kSint:
    case TypeKind::kUsint:
        return 1;
    case TypeKind::kInt:
    case TypeKind::kUint:
    case TypeKind::kWord:
        return 2;
    case TypeKind::kDint:
    case TypeKind::kUdint:
    case TypeKind::kDword:
        return 3;
    case TypeKind::kReal:
        return 4;
    case TypeKind::kLreal:
        return 5;
    case TypeKind::kLint:
    case TypeKind::kUlint:
        return 6;
    case TypeKind::kTime:
        return 7;
    case TypeKind::kString:
        break;
    }
    return 8;
}

void put32(Bytes& bytes, std::uint64_t value) {
    appendOrdered(bytes, ByteOrder::kLittle, static_cast<std::uint32_t>(value));
}

void put16(Bytes& bytes, std::uint64_t value) {
    appendOrdered(bytes, ByteOrder::kLittle, static_cast<std::uint16_t>(value));
}

void putName(Bytes& bytes, std::string_view name) {
    bytes.insert(bytes.end(), name.begin(), name.end());
    bytes.push_back(0);
}

/// After the name of an array: element type, number of dimensions, both bounds of each.
void putArray(Bytes& bytes, DataType const& type) {
    put32(bytes, type.element);
    put32(bytes, type.dimensions.size());
    for (Dimension const& dimension : type.dimensions) {
        put32(bytes, static_cast<std::uint32_t>(dimension.low));
        put32(bytes, static_cast<std::uint32_t>(dimension.high));
    }
}

Bytes typeRecord(DataType const& type, std::size_t shift) {
    Bytes record;
    put32(record, kTypeRecord);
    put32(record, 0);
    put32(record, classOf(type.kind));
    put32(record, type.size);
    put16(record, type.name.size() + 1);
    putName(record, type.name);
    if (type.kind == TypeKind::kArray) {
        DataType shifted = type;
        shifted.element += shift;
        putArray(record, shifted);
    } else if (type.kind == TypeKind::kStructure) {
        put32(record, type.members.size());
    }
    storeOrdered(std::span(record), kRecordLengthOffset, ByteOrder::kLittle, static_cast<std::uint32_t>(record.size()));
    return record;
}

Bytes variableRecord(Symbol const& symbol, std::size_t shift, bool spaced) {
    Bytes record;
    put32(record, kVariableRecord);
    put32(record, 0);
    put32(record, symbol.place.type + shift);
    put32(record, 0);
    put16(record, symbol.flags);
    put16(record, symbol.place.area);
    put32(record, symbol.place.offset);
    put16(record, symbol.name.size() + 1);
    record.resize(record.size() + (spaced ? kSpace : 0));
    putName(record, symbol.name);
    record.resize(record.size() + (spaced ? kSpace : 0));
    storeOrdered(std::span(record), kRecordLengthOffset, ByteOrder::kLittle, static_cast<std::uint32_t>(record.size()));
    return record;
}

/// A record of an unknown kind in the type section: its length counts from the end of its fixed part.
void putForeignType(Bytes& bytes) {
    constexpr std::uint32_t kBehind = 4;
    std::size_t const end = bytes.size() + kTypeRecordSize + kBehind;
    put32(bytes, kForeignRecord);
    put32(bytes, kBehind);
    bytes.resize(end);
}

/// A record of an unknown kind in the variable section: its length counts from its start.
void putForeignVariable(Bytes& bytes) {
    std::size_t const end = bytes.size() + kVariableRecordSize + 4;
    std::size_t const length = end - bytes.size();
    put32(bytes, kForeignRecord);
    put32(bytes, length);
    bytes.resize(end);
}

void putSection(Bytes& file, std::uint32_t kind, std::size_t records, Bytes const& content) {
    put32(file, kind);
    put32(file, kSectionHeaderSize + content.size());
    put32(file, 0);
    put32(file, records);
    file.insert(file.end(), content.begin(), content.end());
}

void putForeignSection(Bytes& file, SymbolFileForm const& form) {
    if (form.foreignSections) {
        putSection(file, kForeignSection, 1, Bytes(5));
    }
}

} // namespace

Bytes writeSymbolFile(Program const& program, SymbolFileForm const& form) {
    std::size_t const shift = form.placeholders ? 1 : 0;
    Bytes types;
    Bytes variables;
    if (form.placeholders) {
        putForeignType(types);
        putForeignVariable(variables);
    }
    for (std::size_t i = 0; i < program.types().size(); ++i) {
        Bytes const record = typeRecord(program.types()[i], shift);
        types.insert(types.end(), record.begin(), record.end());
    }
    for (Symbol const& symbol : program.symbols()) {
        Bytes const record = variableRecord(symbol, shift, form.spacedNames);
        variables.insert(variables.end(), record.begin(), record.end());
    }

    Bytes file;
    put32(file, kFileFormat);
    put32(file, kFileHeaderSize + form.headerExtra);
    put32(file, form.variant);
    put32(file, program.projectId());
    file.resize(file.size() + form.headerExtra);
    putForeignSection(file, form);
    putSection(file, kTypeSection, program.types().size() + shift, types);
    putForeignSection(file, form);
    putSection(file, kVariableSection, program.symbols().size() + shift, variables);
    return file;
}

} // namespace plc
