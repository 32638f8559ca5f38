#pragma once

#include <set>

class ITag;

namespace host {

/**
 * The tags that failed when they were last asked alone. Kept from one read to the next, it lets each of them be asked
 * apart from the start, so that it does not spoil the list of the others.
 */
class BadTags {
public:
    [[nodiscard]] bool contains(ITag const* tag) const { return tags_.contains(tag); }
    void add(ITag const* tag) { tags_.insert(tag); }

    /** The tag is good again; or it is given back to the driver, and another one may get its address. */
    void remove(ITag const* tag) { tags_.erase(tag); }
    void clear() { tags_.clear(); }

private:
    std::set<ITag const*> tags_;
};

} // namespace host
