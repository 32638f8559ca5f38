#include "driver/ListAccess.h"

#include "driver/errors/ErrorTexts.h"
#include "driver/services/ListService.h"
#include "driver/session/Session.h"
#include "driver/tag/TagList.h"
#include "interfaces/ErrorCodes.h"
#include "protlib/types/MemTypesTable.h"

#include <algorithm>
#include <atomic>

namespace _VELK {

namespace {

constexpr char const* kPlcSymbolFile = "DOWNLOAD.SDB";
constexpr std::size_t kWriteReplyLength = 2;
constexpr std::size_t kEmptyReadReplyLength = 6;

constexpr char const* kWrongByteCount = "Wrong number of bytes received";

/**
 * The value of a bit area's tag may have been packed before the tag was bound, with the bit number of that time.
 * Nothing else shares its byte, so any bit in it means 1.
 */
unsigned char repackBit(Tag_VELK const& tag, unsigned char packed) {
    return packed != 0 ? static_cast<unsigned char>(1U << static_cast<unsigned>(tag.GetBitIndex())) : packed;
}

/** The PLC runs another project. That says nothing about the login. */
bool isOtherProject(std::optional<std::uint16_t> status) {
    return status && (*status == kStatusOtherProject1 || *status == kStatusOtherProject2);
}

bool addValue(ListRequest& request, Tag_VELK const& tag, std::span<unsigned char const> value) {
    if (tag.isBitArea() && value.size() == 1) {
        unsigned char const bit = repackBit(tag, value.front());
        return request.addValue({&bit, 1});
    }
    return request.addValue(value);
}

} // namespace

bool ListAccess::run(bool write, ITag const* const* tags, int n, unsigned char* data, int len) {
    write_ = write;
    tags_ = tags;
    count_ = n;
    data_ = data;
    explicitLength_ = len;
    session_.login.beginCall();
    bool const done = runSteps();
    session_.login.endCall();
    return done;
}

bool ListAccess::runSteps() {
    if (!checkCall() || !addressNode()) {
        return false;
    }
    if (!leaveOtherNode() || !checkLink() || !logIn()) {
        return false;
    }
    symbolFile_ = storedFileOf(node_, ident_);
    if (!provideSymbols()) {
        return false;
    }
    std::optional<int> const length = buildRequest();
    if (!length) {
        return false;
    }
    std::optional<Reply> const reply = exchangeList(*length);
    if (!reply) {
        return false;
    }
    return write_ ? takeWriteReply(*reply) : takeReadReply(*reply);
}

bool ListAccess::checkCall() {
    if (!areTags(tags_, count_) || explicitLength_ < 0 || (data_ == nullptr && count_ > 0)) {
        return session_.errors.fail(kErrorRequest, kInvalidArgument);
    }
    return requireItemLimit(session_, tags_, count_);
}

bool ListAccess::addressNode() {
    int const node = tag(0).nodeId();
    if (!isKnownNode(node)) {
        return session_.errors.fail(kErrorRequest, "Node number out of range");
    }
    node_ = static_cast<std::uint16_t>(node);
    params_ = session_.params.getNodeParams(node);
    order_ = params_->byteOrder();
    return true;
}

bool ListAccess::leaveOtherNode() {
    Login& login = session_.login;
    if (!login.isWithAnother(node_)) {
        return true;
    }
    std::optional<Reply> const reply = session_.link.exchange(writeLogout(session_.link.txData()), login.params());
    if (!reply || replyStatus(*reply, login.params().byteOrder()) != kStatusDone) {
        login.failed();
        return false;
    }
    login.left();
    return true;
}

bool ListAccess::checkLink() {
    if (!session_.link.exchange(writeLinkCheck(session_.link.txData()), *params_)) {
        session_.login.failed();
        return false;
    }
    return true;
}

bool ListAccess::logIn() {
    Login& login = session_.login;
    if (login.isLoggedIn()) {
        return true;
    }
    login.prepare(*params_);
    std::optional<Reply> const reply = session_.link.exchange(writeLogin(session_.link.txData(), order_), *params_);
    if (!reply || replyStatus(*reply, order_) != kStatusLoggedIn) {
        return false;
    }
    login.accepted(node_);
    return true;
}

bool ListAccess::provideSymbols() {
    SymbolStore& symbols = session_.symbols;
    return (symbols.areReady(symbolFile_) || symbols.takeFetched(symbolFile_, fetchSymbols())) &&
           symbols.provideTable(symbolFile_, {tags_, static_cast<std::size_t>(count_)});
}

bool ListAccess::fetchSymbols() {
    return session_.upload.fetch(kPlcSymbolFile, symbolFile_.path.data(), params_, params_->isBigEndian()) != 0;
}

/** Writes the request for the list; returns its length. */
std::optional<int> ListAccess::buildRequest() {
    ListRequest request(session_.link.txData(), order_, write_, static_cast<std::uint32_t>(count_));
    unsigned char const* value = data_;
    for (int i = 0; i < count_; ++i) {
        Tag_VELK const& item = tag(i);
        item.setStatus(kItemGood);
        if (!resolveTag(item)) {
            return std::nullopt;
        }
        if (!addItem(request, item, value)) {
            session_.errors.fault(kErrorRequest, kTxExceeded);
            return std::nullopt;
        }
        value += write_ ? item.PackedLen() : 0; // the room for a read may be shorter than the value
    }
    if (!request.addProjectIdentifier(session_.symbols.projectIdentifier(node_))) {
        session_.errors.fault(kErrorRequest, kTxExceeded);
        return std::nullopt;
    }
    return request.length();
}

/** Adds the item's descriptor and, for a write, its value; false when the request has no room for them. */
bool ListAccess::addItem(ListRequest& request, Tag_VELK const& tag, unsigned char const* value) {
    ListItem const item{static_cast<std::uint16_t>(tag.areaRow()->area), static_cast<std::uint32_t>(tag.index()),
                        tag.isBitArea() ? 0 : static_cast<std::uint32_t>(itemLength(tag))};
    return request.addItem(item) &&
           (!write_ || addValue(request, tag, {value, static_cast<std::size_t>(tag.PackedLen())}));
}

/** Sets the address that the tag is sent with; false when there is none. */
bool ListAccess::resolveTag(Tag_VELK const& tag) {
    if (tag.isProjectIdentifier()) {
        return refuseTag(tag);
    }
    if (session_.symbols.usesDefaultAddresses(node_)) {
        tag.useDefaultAddress();
    } else if (!session_.symbols.bind(tag, node_)) {
        if (write_) {
            return refuseTag(tag);
        }
        tag.setStatus(kItemNotInSymbolFile);
        tag.useDefaultAddress();
    }
    return tag.areaRow() != nullptr || refuseTag(tag);
}

bool ListAccess::refuseTag(Tag_VELK const& tag) {
    session_.errors.noteFault();
    return session_.errors.failNaming("", tag.GetVarName(), " not present in Symbols files");
}

std::optional<ListAccess::Reply> ListAccess::exchangeList(int length) {
    std::optional<Reply> const reply = session_.link.exchange(length, *params_);
    if (!reply) {
        session_.login.forget();
    }
    return reply;
}

bool ListAccess::takeWriteReply(Reply reply) {
    std::optional<std::uint16_t> const status = replyStatus(reply, order_);
    bool const accepted = status == kStatusDone;
    if (accepted) {
        session_.login.succeeded();
    } else if (!isOtherProject(status)) {
        session_.login.failed();
    }
    return (accepted && reply.size() == kWriteReplyLength) ||
           session_.errors.fail(kErrorReply, "Wrong reply length or ack in WriteData operation");
}

bool ListAccess::takeReadReply(Reply reply) {
    std::optional<std::uint16_t> const status = replyStatus(reply, order_);
    if (!status) {
        session_.login.failed();
        return session_.errors.fail(kErrorReply, kWrongByteCount);
    }
    if (*status == kStatusDone) {
        session_.login.succeeded();
        return takeValues(reply);
    }
    if (isOtherProject(status)) {
        recoverFromOtherProject();
        return false;
    }
    // Kept although nothing reads it. Every driver object of the library sets it, from any thread.
    [[maybe_unused]] static std::atomic<unsigned char> cntNoVarListResponse;
    cntNoVarListResponse.store(0, std::memory_order_relaxed);
    session_.login.failed();
    return session_.errors.fail(kErrorReply, "Command not acknowledged by PLC");
}

bool ListAccess::takeValues(Reply reply) {
    ErrorSink& errors = session_.errors;
    if (count_ == 0) {
        return reply.size() == kEmptyReadReplyLength || errors.fail(kErrorReply, kWrongByteCount);
    }
    ListReply values(reply);
    unsigned char* destination = data_;
    bool allGood = true;
    for (int i = 0; i < count_; ++i) {
        std::optional<ListReply::Value> const value = values.next(itemLength(tag(i)));
        if (!value) {
            return errors.fault(kErrorRequest, kRxExceeded);
        }
        allGood = allGood && value->quality == kGoodQuality;
        std::copy(value->bytes.begin(), value->bytes.end(), destination);
        destination += explicitLength_ != 0 ? 0 : value->bytes.size();
    }
    if (!values.atEnd()) {
        return errors.fail(kErrorReply, kWrongByteCount);
    }
    return allGood || errors.fail(kErrorReply, "One of the values has bad quality");
}

/** The PLC runs a different program than the symbols belong to. The next call loads the file that is fetched here. */
void ListAccess::recoverFromOtherProject() {
    session_.errors.fail(kErrorReply, "Project ID mismatch");
    if (!session_.symbols.giveUpProject(node_)) {
        return;
    }
    session_.errors.noteFault();
    if (fetchSymbols()) {
        session_.symbols.clearTable();
    } else {
        session_.errors.fail(kErrorReply, kSymbolFileMissing);
    }
}

Tag_VELK const& ListAccess::tag(int index) const {
    return velkTag(*tags_[index]);
}

/** Bytes of a value in a request, a reply or an image. */
std::size_t ListAccess::itemLength(Tag_VELK const& item) const {
    return static_cast<std::size_t>(explicitLength_ != 0 ? explicitLength_ : item.PackedLen());
}

bool requireItemLimit(Session& session, ITag const* const* tags, int count) {
    return velkTag(*tags[0]).maxDatagramItems() >= count ||
           session.errors.fail(kErrorRequest, "Too many items in datagram");
}

} // namespace _VELK
