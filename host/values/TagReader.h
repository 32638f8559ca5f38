#pragma once

#include "base/Result.h"
#include "host/values/BadTags.h"
#include "host/values/DatagramPlanner.h"
#include "interfaces/ItemStatus.h"

#include <span>
#include <string>
#include <vector>

namespace host {

using ValueBytes = std::vector<unsigned char>;

/** The result of one tag. */
struct TagResult {
    bool good = false;
    idal_error_t status = kItemNotProcessed;
    ValueBytes value;      ///< GetVarLength() bytes in the host's representation; empty after a write or a failure
    base::Failure failure; ///< only when not good
};

/** A tag and the value to write to it, GetVarLength() bytes in the host's representation. */
struct TagWrite {
    ITag* tag = nullptr;
    ValueBytes value;
};

struct TransferPolicy {
    /**
     * Cuts a list that fails for one of its tags in halves, until every bad tag stands alone and all others have their
     * values. For b bad tags of n that takes up to about 2 b log2(n / b) + 2 b more calls. Where the failure may also
     * be the line's, the search ends when several calls in succession bring no value; after a time-out, at once.
     */
    bool findBadTags = true;

    /**
     * After a time-out, do not ask the same node again in the same call: its other tags fail at once in the same way.
     */
    bool skipNodeAfterTimeout = false;
};

/**
 * Reads and writes lists of tags of one driver instance. For one thread at a time.
 *
 * Results are in the order of the list. A failure affects only its own datagram or, when the driver refuses a datagram
 * because of one tag, only that tag.
 */
class TagReader {
public:
    /** @p protocol must outlive this object. */
    explicit TagReader(IProtocol3& protocol, TransferPolicy policy = {});

    /** Reads @p tags; a null pointer is a tag that could not be created, and fails alone. */
    std::vector<TagResult> read(std::span<ITag* const> tags);

    /** The same, asking apart the tags that are @p known to be bad; it is kept up to date for the next read. */
    std::vector<TagResult> read(std::span<ITag* const> tags, BadTags& known);

    /** The same along a plan made for these very tags, so that a cycle plans only once. */
    std::vector<TagResult> read(std::span<ITag* const> tags, std::vector<Datagram> const& plan);

    /** Writes in the order given, node by node. A value of the wrong length fails alone. */
    std::vector<TagResult> write(std::span<TagWrite const> writes);

private:
    std::vector<TagResult> read(std::span<ITag* const> tags, std::vector<Datagram> const& plan, BadTags& known);

    IProtocol3& protocol_;
    TransferPolicy policy_;
};

} // namespace host
