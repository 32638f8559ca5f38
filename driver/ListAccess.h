#pragma once

#include "driver/config/ByteOrder.h"
#include "driver/session/SymbolStore.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

class ITag;
class Tag_VELK;

namespace _VELK {

class ListRequest;
struct NodeParams;
struct Session;

/**
 * Reads or writes a list of variables on the node of tags[0]: logs in, makes sure of the node's symbols, binds the
 * tags, exchanges the list.
 *
 * An object serves one call; everything remembered beyond it is in the session.
 */
class ListAccess {
public:
    /** @p ident is the instance's name for the host. */
    ListAccess(Session& session, char const* ident) : session_(session), ident_(ident) {}

    /** See Protocol_VELK::doProtocolInner(). */
    bool run(bool write, ITag const* const* tags, int n, unsigned char* data, int len);

private:
    using Reply = std::span<unsigned char const>;

    bool runSteps();
    bool checkCall();
    bool addressNode();
    bool leaveOtherNode();
    bool checkLink();
    bool logIn();
    bool provideSymbols();
    std::optional<int> buildRequest();
    bool addItem(ListRequest& request, Tag_VELK const& tag, unsigned char const* value);
    bool resolveTag(Tag_VELK const& tag);
    bool refuseTag(Tag_VELK const& tag);
    std::optional<Reply> exchangeList(int length);
    bool takeWriteReply(Reply reply);
    bool takeReadReply(Reply reply);
    bool takeValues(Reply reply);
    void recoverFromOtherProject();
    bool fetchSymbols();

    [[nodiscard]] Tag_VELK const& tag(int index) const;
    [[nodiscard]] std::size_t itemLength(Tag_VELK const& item) const;

    Session& session_;
    char const* ident_;

    bool write_ = false;
    ITag const* const* tags_ = nullptr;
    int count_ = 0;
    unsigned char* data_ = nullptr;
    int explicitLength_ = 0; ///< 0: every item has its own length

    std::uint16_t node_ = 0;
    NodeParams const* params_ = nullptr; ///< of the node
    ByteOrder order_ = ByteOrder::LittleEndian;
    StoredFile symbolFile_;
};

/** Refuses a list that is longer than the model of its first tag allows. */
bool requireItemLimit(Session& session, ITag const* const* tags, int count);

} // namespace _VELK
