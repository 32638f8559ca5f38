#pragma once

#include "base/Result.h"
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
     * How many more calls may be spent on one datagram to find the tag that makes it fail: the datagram is halved until
     * the bad tag is alone. 16 calls find one bad tag among 90; with 0 the whole datagram fails.
     */
    int extraCalls = 16;

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

    /** The same with a plan made for exactly these tags, so that cyclic reads plan only once. */
    std::vector<TagResult> read(std::span<ITag* const> tags, std::vector<Datagram> const& plan);

    /** Writes in the order given, node by node. A value of the wrong length fails alone. */
    std::vector<TagResult> write(std::span<TagWrite const> writes);

private:
    IProtocol3& protocol_;
    TransferPolicy policy_;
};

} // namespace host
