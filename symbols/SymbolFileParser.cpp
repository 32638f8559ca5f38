#include "symbols/SymbolFileParser.h"

#include <array>

namespace _VELK {

namespace {

constexpr std::uint32_t kRecordsBetweenYields = 100;
constexpr char const* kStructuredTypeName = "DATA";
constexpr char const* kNoTypeName = "NONE";

Symbol placeholderSymbol() noexcept {
    Symbol symbol;
    symbol.typeName = kNoTypeName;
    symbol.typeNumber = kPlaceholderTypeClass;
    symbol.flags = {0x6E, 0x00};
    return symbol;
}

bool isStructured(std::uint32_t typeClass) noexcept {
    return typeClass == kArrayTypeClass || typeClass == kStructureTypeClass;
}

std::span<std::uint8_t> bytesOf(std::span<char> text) noexcept {
    return {reinterpret_cast<std::uint8_t*>(text.data()), text.size()};
}

} // namespace

SymbolFileParser::SymbolFileParser(std::FILE* file, YieldHook yield)
    : reader_(file), yield_(yield), bytesToKeep_(reader_.size()) {}

bool SymbolFileParser::parse(SymbolListTag& list) {
    list.clear();
    if (!readFileHeader(list)) {
        return false;
    }
    std::optional<SectionHeader> const types = findSection(kTypeSectionKind);
    if (!types || !readTypes(*types)) {
        return false;
    }
    // Searched from the end of the last type: the length of the type section is not used.
    std::optional<SectionHeader> const variables = findSection(kVariableSectionKind);
    return variables && readVariables(*variables, list);
}

bool SymbolFileParser::readFileHeader(SymbolListTag& list) {
    std::array<std::uint8_t, kSymbolFileHeaderSize> bytes{};
    if (!reader_.read(bytes)) {
        return false;
    }
    SymbolFileHeader const header = parseSymbolFileHeader(bytes);
    if (header.format != kSymbolFileFormat || header.variant > kHighestSymbolFileVariant ||
        header.headerLength < kSymbolFileHeaderSize || !reader_.seek(header.headerLength)) {
        return false;
    }
    list.projectId = header.projectId;
    return true;
}

std::optional<SectionHeader> SymbolFileParser::findSection(std::uint32_t kind) {
    std::array<std::uint8_t, kSectionHeaderSize> bytes{};
    for (;;) {
        std::uint64_t const start = reader_.position();
        if (!reader_.read(bytes)) {
            return std::nullopt;
        }
        SectionHeader const section = parseSectionHeader(bytes);
        if (section.kind == kind) {
            return section;
        }
        if (section.length < kSectionHeaderSize || !reader_.seek(start + section.length)) {
            return std::nullopt;
        }
    }
}

bool SymbolFileParser::readTypes(SectionHeader const& section) {
    if (!canHold(section.recordCount, kTypeRecordSize)) {
        return false;
    }
    types_.types.resize(section.recordCount);
    for (SdbType& type : types_.types) {
        if (!readTypeRecord(type)) {
            return false;
        }
    }
    return true;
}

bool SymbolFileParser::readTypeRecord(SdbType& type) {
    std::uint64_t const start = reader_.position();
    std::array<std::uint8_t, kTypeRecordSize> bytes{};
    if (!reader_.read(bytes)) {
        return false;
    }
    TypeRecord const record = parseTypeRecord(bytes);
    if (record.isPlaceholder()) {
        type.typeClass = kPlaceholderTypeClass;
        return reader_.seek(start + kTypeRecordSize + record.length); // unlike a type, counted from here on purpose
    }
    return record.length != 0 && readType(record, type) && reader_.seek(start + record.length);
}

bool SymbolFileParser::readType(TypeRecord const& record, SdbType& type) {
    type.typeClass = record.typeClass;
    type.size = record.size;
    if (record.nameLength != 0) {
        type.name = readText(record.nameLength, types_.texts);
        if (type.name == nullptr) {
            return false;
        }
    }
    switch (record.typeClass) {
    case kArrayTypeClass:
        return readArrayExtra(type);
    case kStructureTypeClass:
    case kTypeClass13:
    case kTypeClass23:
        return readExtra(kPlainExtraSize, type);
    default:
        return true;
    }
}

bool SymbolFileParser::readArrayExtra(SdbType& type) {
    std::array<std::uint8_t, kArrayExtraSize> bytes{};
    if (!reader_.read(bytes)) {
        return false;
    }
    ArrayExtra const extra = parseArrayExtra(bytes);
    type.elementType = extra.elementType;
    return canHold(extra.dimensionCount, kArrayDimensionSize) &&
           readExtra(extra.dimensionCount * kArrayDimensionSize, type);
}

bool SymbolFileParser::readExtra(std::size_t length, SdbType& type) {
    auto const extra = readBytes(length, types_.texts);
    if (extra) {
        type.extra = *extra;
    }
    return extra.has_value();
}

bool SymbolFileParser::readVariables(SectionHeader const& section, SymbolListTag& list) {
    if (!canHold(section.recordCount, kVariableRecordSize)) {
        return false;
    }
    list.symbols = std::make_unique<Symbol[]>(section.recordCount);
    list.count = section.recordCount;
    for (std::uint32_t i = 0; i < list.count; ++i) {
        if (!readVariableRecord(list.symbols[i], list.texts)) {
            return false;
        }
        if (i % kRecordsBetweenYields == 0 && yield_ != nullptr) {
            yield_();
        }
    }
    return true;
}

bool SymbolFileParser::readVariableRecord(Symbol& symbol, TextPool& texts) {
    std::uint64_t const start = reader_.position();
    std::array<std::uint8_t, kVariableRecordSize> bytes{};
    if (!reader_.read(bytes)) {
        return false;
    }
    VariableRecord const record = parseVariableRecord(bytes);
    if (record.isPlaceholder()) {
        symbol = placeholderSymbol();
        return record.length != 0 && reader_.seek(start + record.length);
    }
    symbol.typeNumber = record.typeNumber;
    symbol.area = record.area;
    symbol.offset = record.offset;
    symbol.flags = record.flags;
    return readVariableName(record, start, symbol, texts) && describeType(symbol, texts);
}

bool SymbolFileParser::readVariableName(VariableRecord const& record, std::uint64_t start, Symbol& symbol,
                                        TextPool& texts) {
    bool const hasGap = record.hasGapBeforeName();
    if (hasGap && (record.length == 0 || !reader_.seek(reader_.position() + kGapBeforeName))) {
        return false;
    }
    char const* const name = readText(record.nameLength, texts);
    if (name == nullptr) {
        return false;
    }
    symbol.name = name;
    return !hasGap || reader_.seek(start + record.length);
}

bool SymbolFileParser::describeType(Symbol& symbol, TextPool& texts) {
    std::vector<SdbType>& types = types_.types;
    if (symbol.typeNumber >= types.size()) {
        return false;
    }
    SdbType& type = types[symbol.typeNumber];
    bool const isArray = type.typeClass == kArrayTypeClass;
    if (isArray && type.elementType >= types.size()) {
        return false;
    }
    symbol.size = type.size;
    if (type.typeClass == kStructureTypeClass || (isArray && isStructured(types[type.elementType].typeClass))) {
        symbol.typeName = kStructuredTypeName;
        return true;
    }
    if (type.listText == nullptr) {
        type.listText = type.name == nullptr ? kNoTypeName : texts.copy(type.name);
    }
    symbol.typeName = type.listText;
    return true;
}

bool SymbolFileParser::canHold(std::uint64_t count, std::uint64_t bytesEach) const noexcept {
    return count <= reader_.remaining() / bytesEach;
}

std::optional<std::span<char const>> SymbolFileParser::readBytes(std::size_t length, TextPool& pool) {
    if (length > bytesToKeep_ || length > reader_.remaining()) {
        return std::nullopt;
    }
    bytesToKeep_ -= length;
    std::span<char> const piece = pool.take(length + 1);
    piece.back() = '\0';
    std::span<char> const bytes = piece.first(length);
    return reader_.read(bytesOf(bytes)) ? std::optional<std::span<char const>>(bytes) : std::nullopt;
}

char const* SymbolFileParser::readText(std::size_t length, TextPool& pool) {
    std::optional<std::span<char const>> const bytes = readBytes(length, pool);
    return bytes ? bytes->data() : nullptr;
}

} // namespace _VELK
