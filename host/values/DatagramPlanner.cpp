#include "host/values/DatagramPlanner.h"

#include "host/values/TagLength.h"
#include "interfaces/IProtocol.h"
#include "interfaces/ITag.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <utility>

namespace host {

namespace {

/**
 * How many datagrams of a node are kept open for more tags; a larger number would save no datagrams, only cost time.
 */
constexpr std::size_t kOpenForReading = 8;

/** Of two writes to a variable the later one must win, so a write may only join the latest datagram. */
constexpr std::size_t kOpenForWriting = 1;

class Builder {
public:
    Builder(IProtocol3& protocol, Purpose purpose) : protocol_(protocol), purpose_(purpose) {}

    void add(std::size_t index, ITag const* tag) {
        Node& node = nodeOf(tag);
        if (goesAlone(tag)) {
            node.datagrams.push_back({node.number, needsSingleCall(tag), {index}});
            if (purpose_ == Purpose::Write) {
                node.open.clear();
            }
            return;
        }
        for (Open& open : node.open) {
            if (takes(open, tag)) {
                open.tags.push_back(tag);
                node.datagrams[open.datagram].items.push_back(index);
                return;
            }
        }
        begin(node, index, tag);
    }

    std::vector<Datagram> take() {
        std::vector<Datagram> plan;
        for (Node& node : nodes_) {
            std::move(node.datagrams.begin(), node.datagrams.end(), std::back_inserter(plan));
        }
        return plan;
    }

private:
    struct Open {
        std::size_t datagram; ///< index into the node's datagrams
        std::vector<ITag const*> tags;
    };
    struct Node {
        int number;
        std::vector<Datagram> datagrams;
        std::deque<Open> open;
    };

    Node& nodeOf(ITag const* tag) {
        int const number = protocol_.GetNodeID(tag);
        auto const found =
            std::find_if(nodes_.begin(), nodes_.end(), [number](Node const& node) { return node.number == number; });
        return found != nodes_.end() ? *found : nodes_.emplace_back(Node{number, {}, {}});
    }

    bool needsSingleCall(ITag const* tag) const {
        if (protocol_.MaxDatagramItems(tag) < 1) {
            return true;
        }
        return purpose_ == Purpose::Write &&
               (!protocol_.CanWriteDatagrams(tag) || !protocol_.CanCoexistInDatagram(tag, tag));
    }

    /** A tag that cannot share a datagram with itself cannot share one with any tag. */
    bool goesAlone(ITag const* tag) const { return needsSingleCall(tag) || !protocol_.CanCoexistInDatagram(tag, tag); }

    // Never called for an empty datagram: the driver examines the first tag of the list.
    bool takes(Open const& open, ITag const* tag) const {
        auto const count = static_cast<int>(open.tags.size());
        return purpose_ == Purpose::Read ? protocol_.CanAddToDatagram(open.tags.data(), count, tag)
                                         : protocol_.CanAddToWriteDatagram(open.tags.data(), count, tag);
    }

    void begin(Node& node, std::size_t index, ITag const* tag) {
        node.open.push_back({node.datagrams.size(), {tag}});
        node.datagrams.push_back({node.number, false, {index}});
        if (node.open.size() > (purpose_ == Purpose::Read ? kOpenForReading : kOpenForWriting)) {
            node.open.pop_front();
        }
    }

    IProtocol3& protocol_;
    Purpose purpose_;
    std::deque<Node> nodes_;
};

} // namespace

std::vector<Datagram> planDatagrams(IProtocol3& protocol, std::span<ITag* const> tags, Purpose purpose) {
    Builder builder(protocol, purpose);
    for (std::size_t index = 0; index < tags.size(); ++index) {
        if (tags[index] != nullptr && checkLength(*tags[index]).ok()) {
            builder.add(index, tags[index]);
        }
    }
    return builder.take();
}

} // namespace host
