#pragma once

#include <cstddef>
#include <span>
#include <vector>

class IProtocol3;
class ITag;

namespace host {

enum class Purpose { Read, Write };

/** Tags that go in one call, in the caller's order. */
struct Datagram {
    int node = 0;
    bool single = false;            ///< one tag that the driver accepts in Read() or Write() only
    std::vector<std::size_t> items; ///< indices into the caller's list
};

/**
 * Groups @p tags into datagrams with the driver's planning operations.
 *
 * Every tag is in exactly one datagram, also one that is equal to another; null pointers and tags with a length that
 * cannot be asked for (checkLength()) are in none. Datagrams of one node follow each other, nodes in the order in which
 * they first appear: each change of node costs a logout and a login. Writes to one node keep their order.
 */
std::vector<Datagram> planDatagrams(IProtocol3& protocol, std::span<ITag* const> tags, Purpose purpose);

} // namespace host
