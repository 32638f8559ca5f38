#include "driver/Protocol_VELK.h"

#include "description/ProtocolDescription.h"
#include "driver/config/MemoryModels.h"
#include "driver/tag/TagServices.h"
#include "driver/tag/Tag_VELK.h"
#include "interfaces/HostServices.h"
#include "protlib/HostServiceVariables.h"
#include "protlib/InterfaceNames.h"
#include "protlib/NoThrow.h"

#include <optional>

namespace {

/** The host's number of a parity; none for a text that is no parity. There is deliberately no "space". */
std::optional<int> parityNumber(std::string const& parity) {
    constexpr std::array<char const*, 4> kParities{"none", "even", "odd", "mark"};
    for (std::size_t number = 0; number < kParities.size(); ++number) {
        if (parity == kParities[number]) {
            return static_cast<int>(number);
        }
    }
    return std::nullopt;
}

} // namespace

IProtocol* CreateProtocol_VELK() {
    return std::make_unique<Protocol_VELK>().release();
}

Protocol_VELK::Protocol_VELK()
    : loginParams_(paramManager_.getNodeParams(0)), serialFactory_(static_cast<ISerialFactory*>(piSerialFactory)) {
    _VELK::registerModels(memoryManager_);
    symbolTable_ = std::make_unique<_VELK::RtsSym>(_VELK::kNodeCount, &yieldToHost);
}

Protocol_VELK::~Protocol_VELK() {
    releasePort();
}

IInterface* Protocol_VELK::ConvertTo(char const* name) {
    return CompareInterface(name, "Protocol_VELK") ? this : ProtocolBase::ConvertTo(name);
}

char const* Protocol_VELK::GetXml() const {
    return GetXml_VELK();
}

bool Protocol_VELK::Config(char const* configuration) {
    return guarded([&] {
        return paramManager_.parse(configuration) ? takeLineSettings()
                                                  : fail(kErrorRequest, paramManager_.getLastError());
    });
}

bool Protocol_VELK::takeLineSettings() {
    _VELK::CommonParams const& common = *paramManager_.getCommonParams();
    portName_ = common.uart;
    baudRate_ = common.baudrate;
    stopBits_ = common.stopbits;
    dataBits_ = 8;
    std::optional<int> const parity = parityNumber(common.parity);
    if (!parity) {
        return fail(kErrorRequest, "Parser: parameter 'parity' has invalid value");
    }
    parity_ = *parity;
    rs485_ = common.mode == "RS-485" ? 1 : 0;
    return true;
}

bool Protocol_VELK::Start() {
    if (portOpen_) {
        return true;
    }
    port_ = serialFactory_ != nullptr ? serialFactory_->CreatePort(portName_.c_str()) : nullptr;
    if (port_ != nullptr) {
        portOpen_ = port_->Open(baudRate_, parity_, dataBits_, stopBits_, rs485_) != 0;
        if (portOpen_) {
            return true;
        }
        releasePort();
    }
    return fail(kErrorRequest, "Can't open serial port");
}

bool Protocol_VELK::Stop() {
    if (portOpen_) {
        releasePort();
        portOpen_ = false;
    }
    return true;
}

void Protocol_VELK::releasePort() {
    if (port_ != nullptr) {
        serialFactory_->ReleasePort(port_);
        port_ = nullptr;
    }
}

TagBase* Protocol_VELK::CreateTagBase(char const* address) {
    auto tag = ProtUtilsN::noThrow(
        [&] {
            return std::make_unique<Tag_VELK>(address, _VELK::TagServices{paramManager_, memoryManager_});
        },
        nullptr);
    if (tag == nullptr) {
        SetError(kErrorPort, "Can't allocate Tag");
        return nullptr;
    }
    if (!tag->IsValid()) {
        SetTagError(tag.get());
        return nullptr;
    }
    if (tag->isProjectIdentifier()) {
        declareProject(tag->nodeId(), static_cast<std::uint32_t>(tag->index()));
    }
    tag->setSwapBytes(paramManager_.getNodeParams(tag->nodeId())->isBigEndian());
    return tag.release();
}

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
    Model const* const model = tag != nullptr ? velkTag(*tag).model() : nullptr;
    return model != nullptr ? model->getMaxDatagramItems() : 0;
}

int Protocol_VELK::MaxDatagramLength(ITag const* tag) const {
    Model const* const model = tag != nullptr ? velkTag(*tag).model() : nullptr;
    return model != nullptr ? model->getMaxDatagramLength() : 0;
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

void Protocol_VELK::declareProject(int node, std::uint32_t identifier) {
    if (!_VELK::isKnownNode(node) || identifier == 0) {
        return;
    }
    NodeState& state = nodes_[static_cast<std::size_t>(node)];
    state.projectIdentifier = identifier;
    state.confirmedProjectIdentifier = identifier;
    state.useDefaultAddresses = true;
}

Protocol_VELK::NodeState const* Protocol_VELK::nodeState(int node) const {
    return _VELK::isKnownNode(node) ? &nodes_[static_cast<std::size_t>(node)] : nullptr;
}

std::uint32_t Protocol_VELK::projectIdentifier(int node) const {
    NodeState const* const state = nodeState(node);
    return state != nullptr ? state->projectIdentifier : 0;
}

std::uint32_t Protocol_VELK::confirmedProjectIdentifier(int node) const {
    NodeState const* const state = nodeState(node);
    return state != nullptr ? state->confirmedProjectIdentifier : 0;
}

bool Protocol_VELK::usesDefaultAddresses(int node) const {
    NodeState const* const state = nodeState(node);
    return state != nullptr && state->useDefaultAddresses;
}

/** Records a reason that names something; when there is no memory for that, one that does not. */
bool Protocol_VELK::failNaming(char const* before, char const* name, char const* after) {
    std::string text;
    bool const named = ProtUtilsN::noThrow([&] { text.append(before).append(name).append(after); });
    return fail(kErrorRequest, named ? text.c_str() : after);
}
