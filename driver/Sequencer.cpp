#include "driver/ListCall.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/services/ListService.h"
#include "protlib/MemTypesTable.h"

#include <algorithm>
#include <atomic>
#include <optional>

using _VELK::ByteOrder;

namespace {

constexpr std::size_t kWriteReplyLength = 2;
constexpr std::size_t kEmptyReadReplyLength = 6;
constexpr int kFailuresThatForgetLogin = 5;

constexpr char const* kWrongByteCount = "Wrong number of bytes received";

ByteOrder orderOf(_VELK::NodeParams const& node) {
    return _VELK::byteOrderOf(node.isBigEndian());
}

/**
 * The value of a bit area's tag was packed when the tag may not yet have been bound, at whatever bit it had then.
 * Nothing else shares its byte, so that any bit in it means 1.
 */
unsigned char repackBit(Tag_VELK const& tag, unsigned char packed) {
    return packed != 0 ? static_cast<unsigned char>(1U << static_cast<unsigned>(tag.GetBitIndex())) : packed;
}

bool addValue(_VELK::ListRequest& request, Tag_VELK const& tag, std::span<unsigned char const> value) {
    if (tag.isBitArea() && value.size() == 1) {
        unsigned char const bit = repackBit(tag, value.front());
        return request.addValue({&bit, 1});
    }
    return request.addValue(value);
}

} // namespace

bool Protocol_VELK::doProtocolInner(bool write, ITag const* const* tags, int n, unsigned char* data, int len) {
    ListCall call;
    call.write = write;
    call.tags = tags;
    call.count = n;
    call.data = data;
    call.explicitLength = len;
    loginDoubted_ = false;
    bool const done = runList(call);
    settleLogin();
    return done;
}

bool Protocol_VELK::runList(ListCall& call) {
    if (!checkCall(call) || !addressNode(call)) {
        return false;
    }
    if (!leaveOtherNode(call) || !checkLink(call) || !login(call)) {
        return false;
    }
    findSymbolFile(call);
    int length = 0;
    if (!provideSymbols(call) || !provideSymbolTable(call) || !buildRequest(call, length)) {
        return false;
    }
    std::span<unsigned char const> reply;
    if (!exchangeList(call, length, reply)) {
        return false;
    }
    return call.write ? takeWriteReply(call, reply) : takeReadReply(call, reply);
}

bool Protocol_VELK::checkCall(ListCall const& call) {
    if (!areTags(call.tags, call.count) || call.explicitLength < 0 || (call.data == nullptr && call.count > 0)) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    return requireItemLimit(call.tags, call.count);
}

bool Protocol_VELK::addressNode(ListCall& call) {
    int const node = GetNodeID(call.tags[0]);
    if (!_VELK::isKnownNode(node)) {
        return fail(kErrorRequest, "Node number out of range");
    }
    call.node = static_cast<std::uint16_t>(node);
    call.params = paramManager_.getNodeParams(node);
    call.state = &nodes_[call.node];
    call.order = orderOf(*call.params);
    return true;
}

bool Protocol_VELK::leaveOtherNode(ListCall const& call) {
    if (!loggedIn_ || loginNode_ == call.node) {
        return true;
    }
    std::span<unsigned char const> reply;
    if (!exchange(_VELK::writeLogout(txData_), *loginParams_, reply) ||
        _VELK::replyStatus(reply, orderOf(*loginParams_)) != _VELK::kStatusDone) {
        doubtLogin();
        return false;
    }
    loggedIn_ = false;
    return true;
}

bool Protocol_VELK::checkLink(ListCall const& call) {
    std::span<unsigned char const> reply;
    if (!exchange(_VELK::writeLinkCheck(txData_), *call.params, reply)) {
        doubtLogin();
        return false;
    }
    return true;
}

bool Protocol_VELK::login(ListCall const& call) {
    if (loggedIn_) {
        return true;
    }
    std::span<unsigned char const> reply;
    if (!exchange(_VELK::writeLogin(txData_, call.order), *call.params, reply) ||
        _VELK::replyStatus(reply, call.order) != _VELK::kStatusLoggedIn) {
        return false;
    }
    loggedIn_ = true;
    loginNode_ = call.node;
    loginParams_ = call.params;
    failedCalls_ = 0;
    return true;
}

bool Protocol_VELK::buildRequest(ListCall const& call, int& length) {
    _VELK::ListRequest request(txData_, call.order, call.write, static_cast<std::uint32_t>(call.count));
    unsigned char const* value = call.data;
    for (int i = 0; i < call.count; ++i) {
        Tag_VELK const& tag = call.tag(i);
        tag.setStatus(kItemGood);
        if (!resolveTag(call, tag)) {
            return false;
        }
        std::size_t const itemLength = call.itemLength(tag);
        _VELK::ListItem const item{static_cast<std::uint16_t>(tag.areaRow()->area),
                                   static_cast<std::uint32_t>(tag.index()),
                                   tag.isBitArea() ? 0 : static_cast<std::uint32_t>(itemLength)};
        auto const packedLength = static_cast<std::size_t>(tag.PackedLen());
        if (!request.addItem(item) || (call.write && !addValue(request, tag, {value, packedLength}))) {
            return fault(kErrorRequest, _VELK::kTxExceeded);
        }
        value += call.write ? packedLength : 0; // the place of a read may be shorter than the value
    }
    if (!request.addProjectIdentifier(call.state->projectIdentifier)) {
        return fault(kErrorRequest, _VELK::kTxExceeded);
    }
    length = request.length();
    return true;
}

/** Gives the tag the address that it goes out with; false when it has none. */
bool Protocol_VELK::resolveTag(ListCall const& call, Tag_VELK const& tag) {
    if (tag.isProjectIdentifier()) {
        return refuseTag(tag);
    }
    if (call.state->useDefaultAddresses) {
        tag.useDefaultAddress();
    } else if (!bindTag(call, tag)) {
        if (call.write) {
            return refuseTag(tag);
        }
        tag.setStatus(kItemNotInSymbolFile);
        tag.useDefaultAddress();
    }
    return tag.areaRow() != nullptr || refuseTag(tag);
}

bool Protocol_VELK::bindTag(ListCall const& call, Tag_VELK const& tag) {
    std::uint32_t const identifier = call.state->projectIdentifier;
    if (tag.isMissing(symbolLoads_, identifier)) {
        return false;
    }
    if (tag.UpdateTagData(*symbolTable_, identifier) == 0 && tag.areaRow() != nullptr) {
        return true;
    }
    tag.setMissing(symbolLoads_, identifier);
    return false;
}

bool Protocol_VELK::refuseTag(Tag_VELK const& tag) {
    communicationFault_ = true;
    return failNaming("", tag.GetVarName(), " not present in Symbols files");
}

bool Protocol_VELK::exchangeList(ListCall const& call, int length, std::span<unsigned char const>& reply) {
    if (exchange(length, *call.params, reply)) {
        return true;
    }
    forgetLogin();
    return false;
}

bool Protocol_VELK::takeWriteReply(ListCall const& call, std::span<unsigned char const> reply) {
    bool const accepted = _VELK::replyStatus(reply, call.order) == _VELK::kStatusDone;
    if (accepted) {
        trustLogin();
    } else {
        doubtLogin();
    }
    return (accepted && reply.size() == kWriteReplyLength) ||
           fail(kErrorReply, "Wrong reply length or ack in WriteData operation");
}

bool Protocol_VELK::takeReadReply(ListCall const& call, std::span<unsigned char const> reply) {
    std::optional<std::uint16_t> const status = _VELK::replyStatus(reply, call.order);
    if (!status) {
        doubtLogin();
        return fail(kErrorReply, kWrongByteCount);
    }
    if (*status == _VELK::kStatusDone) {
        trustLogin();
        return takeValues(call, reply);
    }
    if (*status == _VELK::kStatusOtherProject1 || *status == _VELK::kStatusOtherProject2) {
        recoverFromOtherProject(call);
        return false;
    }
    // Kept although nothing reads it. Every driver object of the library sets it, from whatever thread.
    [[maybe_unused]] static std::atomic<unsigned char> cntNoVarListResponse;
    cntNoVarListResponse.store(0, std::memory_order_relaxed);
    doubtLogin();
    return fail(kErrorReply, "Command not acknowledged by PLC");
}

bool Protocol_VELK::takeValues(ListCall const& call, std::span<unsigned char const> reply) {
    if (call.count == 0) {
        return reply.size() == kEmptyReadReplyLength || fail(kErrorReply, kWrongByteCount);
    }
    _VELK::ListReply values(reply);
    unsigned char* destination = call.data;
    bool allGood = true;
    for (int i = 0; i < call.count; ++i) {
        std::optional<_VELK::ListReply::Value> const value = values.next(call.itemLength(call.tag(i)));
        if (!value) {
            return fault(kErrorRequest, _VELK::kRxExceeded);
        }
        allGood = allGood && value->quality == _VELK::kGoodQuality;
        std::copy(value->bytes.begin(), value->bytes.end(), destination);
        destination += call.explicitLength != 0 ? 0 : value->bytes.size();
    }
    if (!values.atEnd()) {
        return fail(kErrorReply, kWrongByteCount);
    }
    return allGood || fail(kErrorReply, "One of the values has bad quality");
}

bool Protocol_VELK::exchange(int length, _VELK::NodeParams const& node, std::span<unsigned char const>& reply) {
    int replyLength = 0;
    if (doProtocolInner2(length, &replyLength, &node, node.isBigEndian()) == 0) {
        return false;
    }
    reply = std::span(rxData_).first(static_cast<std::size_t>(replyLength));
    return true;
}

/** Fails, and notes that the failure is more than a refusal. */
bool Protocol_VELK::fault(int code, char const* text) {
    communicationFault_ = true;
    return fail(code, text);
}

void Protocol_VELK::trustLogin() {
    loginDoubted_ = false;
    failedCalls_ = 0;
}

/**
 * A PLC that has restarted knows no login any more, and one that is gone cannot log out; without an end to it the
 * first would be refused for ever, and the second would keep every other node of the line from being reached.
 */
void Protocol_VELK::settleLogin() {
    if (loginDoubted_ && loggedIn_ && ++failedCalls_ >= kFailuresThatForgetLogin) {
        forgetLogin();
    }
}

void Protocol_VELK::forgetLogin() {
    loggedIn_ = false;
    loginNode_ = 0;
    failedCalls_ = 0;
}
