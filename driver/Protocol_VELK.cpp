#include "driver/Protocol_VELK.h"

#include "description/ProtocolDescription.h"
#include "driver/EntryPoints.h"
#include "driver/ListAccess.h"
#include "driver/config/MemoryModels.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/tag/TagList.h"
#include "driver/tag/TagServices.h"
#include "interfaces/HostServices.h"
#include "protlib/protocol/HostServiceVariables.h"
#include "protlib/text/InterfaceNames.h"

#include <algorithm>
#include <cstdint>
#include <memory>

using _VELK::EntryPoints;
using _VELK::ListAccess;

IProtocol* CreateProtocol_VELK() {
    return std::make_unique<Protocol_VELK>().release();
}

Protocol_VELK::Protocol_VELK() : session_(this, &record, static_cast<ISerialFactory*>(piSerialFactory)) {
    _VELK::registerModels(memoryManager_);
}

void Protocol_VELK::record(void* driver, int code, char const* text) {
    static_cast<Protocol_VELK*>(driver)->SetError(code, text);
}

template <typename Step>
bool Protocol_VELK::guarded(Step&& step) {
    bool result = false;
    ProtUtilsN::Outcome const outcome = ProtUtilsN::contain([&] { result = step(); });
    return outcome == ProtUtilsN::Outcome::Done ? result : reportOutcome(outcome);
}

bool Protocol_VELK::reportOutcome(ProtUtilsN::Outcome outcome) {
    bool const shortMemory = outcome == ProtUtilsN::Outcome::OutOfMemory;
    return session_.errors.fail(kErrorPort,
                                shortMemory ? ProtUtilsN::kOutOfMemoryText : ProtUtilsN::kHostExceptionText);
}

// Identity

IInterface* Protocol_VELK::ConvertTo(char const* name) {
    return CompareInterface(name, "Protocol_VELK") ? this : ProtocolBase::ConvertTo(name);
}

char const* Protocol_VELK::GetXml() const {
    return GetXml_VELK();
}

// Lifecycle

bool Protocol_VELK::Config(char const* configuration) {
    return guarded([&] {
        return session_.params.parse(configuration)
                   ? session_.link.takeSettings()
                   : session_.errors.fail(kErrorRequest, session_.params.getLastError());
    });
}

bool Protocol_VELK::Start() {
    return guarded([&] { return session_.link.open(); });
}

bool Protocol_VELK::Stop() {
    guarded([&] {
        session_.link.close();
        return true;
    });
    return true;
}

TagBase* Protocol_VELK::CreateTagBase(char const* address) {
    _VELK::TagServices const services{session_.params, memoryManager_};
    auto tag = ProtUtilsN::noThrow([&] { return std::make_unique<Tag_VELK>(address, services); }, nullptr);
    if (tag == nullptr) {
        SetError(kErrorPort, "Can't allocate Tag");
        return nullptr;
    }
    if (!tag->IsValid()) {
        SetTagError(tag.get());
        return nullptr;
    }
    if (tag->isProjectIdentifier()) {
        session_.symbols.declareProject(tag->nodeId(), static_cast<std::uint32_t>(tag->index()));
    }
    return tag.release();
}

// Planning

bool Protocol_VELK::CanBeOptimized(ITag const* /*a*/, ITag const* /*b*/, bool /*write*/) const {
    return false;
}

bool Protocol_VELK::CanWriteDatagrams(ITag const* /*tag*/) const {
    return true;
}

int Protocol_VELK::GetNodeID(ITag const* tag) const {
    return tag != nullptr ? velkTag(*tag).nodeId() : 0;
}

int Protocol_VELK::GetMaxTm(ITag const* /*tag*/) const {
    return 0;
}

int Protocol_VELK::MaxDatagramItems(ITag const* tag) const {
    return tag != nullptr ? velkTag(*tag).maxDatagramItems() : 0;
}

int Protocol_VELK::MaxDatagramLength(ITag const* tag) const {
    return tag != nullptr ? velkTag(*tag).maxDatagramLength() : 0;
}

bool Protocol_VELK::CanCoexistInDatagram(ITag const* a, ITag const* b) const {
    if (a == nullptr || b == nullptr || velkTag(*a).isProjectIdentifier() || velkTag(*b).isProjectIdentifier()) {
        return false;
    }
    return velkTag(*a).nodeId() == velkTag(*b).nodeId();
}

bool Protocol_VELK::CanAddToWriteDatagram(ITag const* const* tags, int count, ITag const* tag) const {
    if (tags == nullptr || !CanCoexistInDatagram(tags[0], tag) || MaxDatagramItems(tag) <= count) {
        return false;
    }
    std::int64_t length = tag->PackedLen();
    for (int i = 0; i < count; ++i) {
        if (tags[i] == nullptr) {
            return false;
        }
        length += tags[i]->PackedLen();
    }
    return length <= MaxDatagramLength(tag);
}

// Reading and writing

bool Protocol_VELK::Read(ITag const* tag, unsigned char* value) {
    // Checked before memory is allocated, as in the other calls.
    return (tag == nullptr || EntryPoints(session_, GetIdent()).canCarry(tag)) && ProtocolBase::Read(tag, value);
}

bool Protocol_VELK::ReadBlock(ITag const* tag, unsigned char* bytes, int length) {
    return guarded([&] { return EntryPoints(session_, GetIdent()).readElements(tag, bytes, length); });
}

bool Protocol_VELK::ReadDatagram(ITag const* const* tags, int count, unsigned char* values) {
    return guarded([&] { return EntryPoints(session_, GetIdent()).readList(tags, count, values, nullptr); });
}

bool Protocol_VELK::ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                           idal_error_t* status) {
    if (status == nullptr && count > 0) {
        return session_.errors.fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    std::fill_n(status, std::max(count, 0), kItemNotProcessed);
    return guarded([&] { return EntryPoints(session_, GetIdent()).readList(tags, count, values, status); });
}

bool Protocol_VELK::Write(ITag const* tag, unsigned char const* value) {
    return guarded([&] { return EntryPoints(session_, GetIdent()).writeValue(tag, value); });
}

bool Protocol_VELK::WriteDatagram(ITag const* const* tags, int count, unsigned char const* values) {
    return guarded([&] { return EntryPoints(session_, GetIdent()).writeList(tags, count, values); });
}

bool Protocol_VELK::WriteDatagramWithStatus(ITag const* const* tags, int count, unsigned char const* values,
                                            idal_error_t* status) {
    if (status == nullptr && count > 0) {
        return session_.errors.fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    if (!WriteDatagram(tags, count, values)) {
        return false;
    }
    std::fill_n(status, count, kItemGood);
    return true;
}

// The steps

bool Protocol_VELK::doReadDatagram(ITag const* const* tags, int count, std::span<unsigned char> image) {
    return EntryPoints(session_, GetIdent()).readImage(tags, count, image);
}

bool Protocol_VELK::doProtocolInner(bool write, ITag const* const* tags, int n, unsigned char* data, int len) {
    return ListAccess(session_, GetIdent()).run(write, tags, n, data, len);
}

unsigned int Protocol_VELK::doProtocolInner2(int requestLength, int* responseLength, _VELK::NodeParams const* node,
                                             bool bigEndian) {
    return session_.link.exchange(requestLength, responseLength, node, bigEndian);
}

unsigned int Protocol_VELK::readFileFromPLC(char const* plcFileName, char const* localPath,
                                            _VELK::NodeParams const* node, bool bigEndian) {
    return session_.upload.fetch(plcFileName, localPath, node, bigEndian);
}
