#include "driver/tag/Tag_VELK.h"

#include "driver/tag/TagAddress.h"
#include "driver/tag/TagServices.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/safety/ScratchBuffer.h"
#include "protlib/tag/TagGeometry.h"
#include "protlib/text/TextUtils.h"
#include "protlib/types/DataTypes.h"
#include "protlib/types/MemTypesTable.h"
#include "protlib/types/ValueConversions.h"
#include "symbols/RtsSym.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t kScratchOnStack = 128;
constexpr int kBitsPerByte = 8;
constexpr std::size_t kDoubleLength = 8;
constexpr std::uint32_t kLargestIndex = std::numeric_limits<int>::max();
constexpr char const* kProjectIdentifierType = "PROJ_ID";

bool isBitAreaName(std::string const& addressSpace) {
    return addressSpace == "MB" || addressSpace == "IB" || addressSpace == "QB";
}

} // namespace

Tag_VELK::Tag_VELK(char const* address, _VELK::TagServices const& driver)
    : address_(address != nullptr ? address : "") {
    valid_ = parse(driver);
}

Tag_VELK::~Tag_VELK() = default;

bool Tag_VELK::parse(_VELK::TagServices const& driver) {
    _VELK::TagAddress fields;
    if (char const* const fault = _VELK::splitTagAddress(address_, fields); fault != nullptr) {
        return refuse(fault);
    }
    variableName_ = fields.variable;
    if (!findParameters(driver, fields) || !findMemoryType(driver, fields.addressSpace) ||
        !parseType(fields.dataType) || !parseSubindex(fields.offset)) {
        return false;
    }
    bitArea_ = isBitAreaName(fields.addressSpace);
    addressSpaceRow_ = memTypeRowOfLetter(fields.addressSpace.front());
    configuredIndex_ = binding_.index;
    configuredSubindex_ = binding_.subindex;
    if (!checkType()) {
        return false;
    }
    std::replace(variableName_.begin(), variableName_.end(), '/', '.');
    return true;
}

bool Tag_VELK::findParameters(_VELK::TagServices const& driver, _VELK::TagAddress const& fields) {
    params_ = &driver.params;
    if (params_->getCommonParams() == nullptr) {
        return refuse("Can't access protocol common parameters");
    }
    nodeId_ = ProtUtilsN::clampToInt(ProtUtilsN::parseInteger(fields.node.c_str(), 0));
    bool const undeclarable = fields.addressSpace == kProjectIdentifierType && !_VELK::isKnownNode(nodeId_);
    if (params_->getNodeParams(nodeId_) == nullptr || undeclarable) {
        return refuse("Can't access protocol node parameters");
    }
    return true;
}

bool Tag_VELK::findMemoryType(_VELK::TagServices const& driver, std::string const& addressSpace) {
    std::string const& modelName = params_->getNodeParams(nodeId_)->model;
    model_ = driver.memory.getModel(modelName);
    if (model_ == nullptr) {
        return refuse("Can't access model");
    }
    memoryType_ = driver.memory.getMemoryType(modelName, addressSpace);
    return memoryType_ != nullptr || refuse("Can't access memory type");
}

bool Tag_VELK::parseType(std::string const& dataType) {
    return ProtUtilsN::GetICOMType(dataType, varType_, itemType_, varLength_, conversions) ||
           refuse((dataType + ": data type unknown").c_str());
}

bool Tag_VELK::parseSubindex(std::string const& offset) {
    _VELK::TagOffset const parsed = _VELK::readTagOffset(offset);
    if (memoryType_ == nullptr || parsed.index < memoryType_->getMinIndex() ||
        parsed.index > memoryType_->getMaxIndex()) {
        return refuse("Index out of range");
    }
    if (!isSubindexValid(parsed.subindex)) {
        return refuse("Subindex invalid");
    }
    binding_.index = static_cast<int>(parsed.index);
    binding_.subindex = static_cast<int>(parsed.subindex);
    return true;
}

bool Tag_VELK::isSubindexValid(std::int64_t subindex) const {
    if (subindex < 0) {
        return false;
    }
    if (ProtUtilsN::IsBitType(varType_)) {
        return subindex < std::int64_t{naturalLength()} * kBitsPerByte;
    }
    int const elementLength = ProtUtilsN::GetBasicLength(this);
    return subindex == 0 || (elementLength > 0 && subindex < naturalLength() / elementLength);
}

bool Tag_VELK::checkType() const {
    if ((ProtUtilsN::GetTypeFlag(varType_) & memoryType_->getIcomTypes()) == 0) {
        return refuse("not allowed icom type");
    }
    return naturalLength() != 0 || refuse("invalid natural data type for this memory type");
}

bool Tag_VELK::refuse(char const* reason) const {
    SetError(reason);
    return false;
}

ITag* Tag_VELK::Clone() const {
    return ProtUtilsN::noThrow([this]() -> ITag* { return new Tag_VELK(*this); }, nullptr);
}

int Tag_VELK::GetByteOffset() const {
    // Counted modulo 2^32: the index of a "PROJ_ID" tag is an identifier, and its product is meaningless.
    auto const index = static_cast<std::uint32_t>(binding_.index);
    auto const subindex = static_cast<std::uint32_t>(binding_.subindex);
    std::uint32_t const unitsOffset = index * static_cast<std::uint32_t>(naturalLength());
    if (!ProtUtilsN::IsBitType(varType_)) {
        return static_cast<int>(unitsOffset + subindex * static_cast<std::uint32_t>(ProtUtilsN::GetBasicLength(this)));
    }
    if (!hasBitUnits()) {
        return static_cast<int>(unitsOffset + subindex / kBitsPerByte);
    }
    return binding_.index / kBitsPerByte;
}

int Tag_VELK::GetBitIndex() const {
    return (hasBitUnits() ? binding_.index : binding_.subindex) % kBitsPerByte;
}

bool Tag_VELK::IsReadOnly() const {
    return memoryType_ != nullptr && memoryType_->isReadOnly();
}

bool Tag_VELK::IsWriteOnly() const {
    return memoryType_ != nullptr && memoryType_->isWriteOnly();
}

bool Tag_VELK::isProjectIdentifier() const {
    return memoryType_ != nullptr && memoryType_->getName() == kProjectIdentifierType;
}

bool Tag_VELK::swapsBytes() const {
    return params_ != nullptr && params_->getNodeParams(nodeId_)->isBigEndian();
}

int Tag_VELK::maxDatagramItems() const {
    return model_ != nullptr ? model_->getMaxDatagramItems() : 0;
}

int Tag_VELK::maxDatagramLength() const {
    return model_ != nullptr ? model_->getMaxDatagramLength() : 0;
}

int Tag_VELK::naturalLength() const {
    return memoryType_ != nullptr ? ProtUtilsN::GetDataLength(memoryType_->getNaturalType()) : 0;
}

bool Tag_VELK::hasBitUnits() const {
    return memoryType_ != nullptr && ProtUtilsN::IsBitType(memoryType_->getNaturalType());
}

int Tag_VELK::UpdateTagData(_VELK::RtsSym const& symbols, std::uint32_t stamp) const {
    if (isBoundTo(stamp)) {
        return 0;
    }
    _VELK::Symbol const* const symbol = symbols.SymGetSymbol(variableName_.c_str());
    if (symbol == nullptr) {
        return 1;
    }
    binding_.stamp = stamp;
    binding_.bound = true;
    if (symbol->offset > kLargestIndex) {
        // The offset does not fit an index, so the driver cannot address the variable.
        binding_.symbolRow = nullptr;
        return 0;
    }
    binding_.symbolRow = memTypeRowOfArea(symbol->area);
    binding_.index = static_cast<int>(symbol->offset);
    return 0;
}

void Tag_VELK::useDefaultAddress() const {
    binding_.index = configuredIndex_;
    binding_.subindex = configuredSubindex_;
    binding_.bound = false;
}

MemTypeRow const* Tag_VELK::areaRow() const {
    return binding_.bound ? binding_.symbolRow : addressSpaceRow_;
}

bool Tag_VELK::Convert(unsigned char const* source, unsigned char* destination, bool towardsPlc) const {
    if (source == nullptr || destination == nullptr) {
        return false;
    }
    if (!swapsBytes()) {
        return TagBase::Convert(source, destination, towardsPlc);
    }
    auto const packedLength = static_cast<std::size_t>(std::max(PackedLen(), 0));
    ProtUtilsN::ScratchBuffer<kScratchOnStack> scratch(std::max(PackedLen(), GetVarLength()));
    if (!scratch.available()) {
        return false;
    }
    std::span<unsigned char> const value = scratch.bytes();
    if (!towardsPlc) {
        std::copy_n(source, packedLength, value.begin());
        return fixByteOrder(value) && TagBase::Convert(value.data(), destination, towardsPlc);
    }
    if (!TagBase::Convert(source, value.data(), towardsPlc) || !fixByteOrder(value)) {
        return false;
    }
    std::copy_n(value.begin(), packedLength, destination);
    return true;
}

bool Tag_VELK::fixByteOrder(std::span<unsigned char> value) const {
    std::span<unsigned char> const bytes = value.first(static_cast<std::size_t>(varLength_));
    switch (ProtUtilsN::GetBasicType(this)) {
    case ICU_SHORT:
    case ICU_UNSIGNED_SHORT:
        return ValueConversionsN::ReverseGroups(bytes, 2);
    case ICU_INT:
    case ICU_UNSIGNED_INT:
    case ICU_FLOAT:
        return ValueConversionsN::ReverseGroups(bytes, 4);
    case ICU_DOUBLE:
        // Deliberately reverses only the first element of an array of doubles.
        return ValueConversionsN::ReverseGroups(bytes.first(std::min(kDoubleLength, bytes.size())), kDoubleLength);
    default:
        return true;
    }
}
