#include "protlib/protocol/ProtocolBase.h"

#include "interfaces/ITag.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/safety/ScratchBuffer.h"
#include "protlib/tag/TagBase.h"
#include "protlib/tag/TagGeometry.h"
#include "protlib/text/InterfaceNames.h"
#include "protlib/text/TextUtils.h"

#include <algorithm>
#include <cstdint>

using ProtUtilsN::noThrow;

namespace {

constexpr std::size_t kImageOnStack = 64;
constexpr int kMaxUnusedGap = 0xFFFFFF;
constexpr std::int64_t kBitsPerByte = 8;

/** How many bits ReadBitBlock() has to deliver for the tag. */
int bitCountOf(ITag const* tag) {
    return ProtUtilsN::IsBitType(tag) ? tag->GetVarLength() : ProtUtilsN::clampToInt(tag->PackedLen() * kBitsPerByte);
}

std::int64_t packedLengthOf(ITag const* const* tags, int count) {
    std::int64_t sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += tags[i]->PackedLen();
    }
    return sum;
}

char const* orEmpty(char const* text) {
    return text == nullptr ? "" : text;
}

} // namespace

ProtocolBase::~ProtocolBase() {
    DeleteTags();
}

IInterface* ProtocolBase::ConvertTo(char const* name) {
    bool const isMine = CompareInterface(name, "ProtocolBase") || CompareInterface(name, "IProtocol3") ||
                        CompareInterface(name, "IProtocol2") || CompareInterface(name, "IProtocol");
    return isMine ? this : nullptr;
}

// Tags

ITag* ProtocolBase::CreateTag(char const* address) {
    TagBase* tag = nullptr;
    if (!noThrow([&] { tag = CreateTagBase(address); })) {
        SetError(kErrorPort, "Can't allocate Tag");
    }
    if (tag != nullptr) {
        tags_.append(tag->registryPlace());
    }
    return tag;
}

void ProtocolBase::FreeTag(ITag* tag) {
    delete tag; // which takes it out of the registry
}

void ProtocolBase::DeleteTags() {
    while (auto* const tag = tags_.takeFirst()) {
        delete tag;
    }
}

// Reading

bool ProtocolBase::Read(ITag const* tag, unsigned char* value) {
    if (tag == nullptr) {
        SetError(kErrorRequest, "Invalid argument");
        return false;
    }
    auto const length = tag->PackedLen();
    ProtUtilsN::ScratchBuffer<kImageOnStack> image(length);
    if (!image.available()) {
        SetError(kErrorPort, ProtUtilsN::kOutOfMemoryText);
        return false;
    }
    auto* const bytes = image.bytes().data();
    bool const isRead =
        CanReadBitBlock(tag) ? ReadBitBlock(tag, bytes, bitCountOf(tag)) : ReadBlock(tag, bytes, length);
    if (!isRead) {
        return false;
    }
    if (!tag->ConvertVariable(bytes, value, false)) {
        SetError(kErrorConversion, "read conversion error");
        return false;
    }
    return true;
}

bool ProtocolBase::CanAddToDatagram(ITag const* const* tags, int count, ITag const* tag) {
    bool const areTags =
        tags != nullptr && tag != nullptr && tags[0] != nullptr &&
        std::none_of(tags, tags + std::max(count, 0), [](ITag const* each) { return each == nullptr; });
    return areTags && CanCoexistInDatagram(tags[0], tag) && MaxDatagramItems(tag) > count &&
           packedLengthOf(tags, count) + tag->PackedLen() <= MaxDatagramLength(tag);
}

bool ProtocolBase::ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                          idal_error_t* status) {
    if (!ReadDatagram(tags, count, values)) {
        return false;
    }
    std::fill_n(status, std::max(count, 0), kItemGood);
    return true;
}

// Positions

bool ProtocolBase::IsBefore(ITag const* a, ITag const* b) const {
    return a != nullptr && b != nullptr &&
           static_cast<unsigned>(a->GetByteOffset()) < static_cast<unsigned>(b->GetByteOffset());
}

bool ProtocolBase::IsAdjacent(ITag const* a, ITag const* b) const {
    return a != nullptr && b != nullptr && ProtUtilsN::getEndingBitExact(b) == ProtUtilsN::getStartingBitExact(a);
}

// Error and ident

int ProtocolBase::GetLastError() const {
    return errorCode_;
}

char const* ProtocolBase::GetLastErrorString() const {
    return errorText_.c_str();
}

void ProtocolBase::SetError(int code, char const* text) {
    errorCode_ = code;
    ProtUtilsN::keepText(errorText_, text);
}

void ProtocolBase::SetTagError(TagBase const* tag) {
    bool const isStored = noThrow([&] {
        std::string text = "Tag URI error: ";
        text.append(orEmpty(tag->GetVarName())).append(" - ").append(tag->GetErrorText());
        SetError(kErrorRequest, text.c_str());
    });
    if (!isStored) {
        SetError(kErrorRequest, "");
    }
}

char const* ProtocolBase::GetIdent() const {
    return ident_.empty() ? GetName() : ident_.c_str();
}

void ProtocolBase::SetIdent(char const* ident) {
    ProtUtilsN::keepText(ident_, ident);
}

char const* ProtocolBase::GetNextInstanceName() const {
    return GetName();
}

// Optional abilities of a driver

bool ProtocolBase::Start() {
    return true;
}

bool ProtocolBase::Stop() {
    return true;
}

bool ProtocolBase::WriteBlock(ITag const* /*tag*/, unsigned char const* /*bytes*/, int /*length*/) {
    SetError(kErrorState, "Optimized writing not supported");
    return false;
}

int ProtocolBase::MaxDatagramItems(ITag const* /*tag*/) const {
    return 0;
}

int ProtocolBase::MaxDatagramLength(ITag const* /*tag*/) const {
    return 0;
}

bool ProtocolBase::CanCoexistInDatagram(ITag const* /*a*/, ITag const* /*b*/) const {
    return false;
}

bool ProtocolBase::ReadDatagram(ITag const* const* /*tags*/, int /*count*/, unsigned char* /*values*/) {
    return false;
}

char const* ProtocolBase::GetXml() const {
    return nullptr;
}

bool ProtocolBase::IsConverted() const {
    return false;
}

int ProtocolBase::Extend(int /*what*/, void* /*argument*/) {
    return 0;
}

bool ProtocolBase::MultipleReadSupported() const {
    return false;
}

bool ProtocolBase::MultipleRead(IMultiRead* /*request*/) {
    return false;
}

bool ProtocolBase::MultipleWriteSupported() const {
    return false;
}

bool ProtocolBase::MultipleWrite(IMultiWrite* /*request*/) {
    return false;
}

bool ProtocolBase::CanReadBitBlock(ITag const* /*tag*/) const {
    return false;
}

bool ProtocolBase::ReadBitBlock(ITag const* /*tag*/, unsigned char* /*bytes*/, int /*bits*/) {
    return false;
}

void* ProtocolBase::GetInterface(char const* /*name*/) {
    return nullptr;
}

int ProtocolBase::MaxUnusedGap(ITag const* /*tag*/) const {
    return kMaxUnusedGap;
}

bool ProtocolBase::NeedsReadBeforeWrite(ITag const* /*tag*/) const {
    return false;
}

bool ProtocolBase::CanWriteDatagrams(ITag const* /*tag*/) const {
    return false;
}

bool ProtocolBase::CanAddToWriteDatagram(ITag const* const* /*tags*/, int /*count*/, ITag const* /*tag*/) const {
    return false;
}

bool ProtocolBase::WriteDatagramWithStatus(ITag const* const* /*tags*/, int /*count*/, unsigned char const* /*values*/,
                                           idal_error_t* /*status*/) {
    return false;
}

bool ProtocolBase::CanWriteBitBlock(ITag const* /*tag*/) const {
    return false;
}

bool ProtocolBase::WriteBitBlock(ITag const* /*tag*/, unsigned char const* /*bytes*/, int /*bits*/) {
    return false;
}
