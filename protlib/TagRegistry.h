#pragma once

class TagBase;

/** A tag's place in the registry of its protocol. It gives the place up when it is destroyed. */
class TagPlace {
public:
    explicit TagPlace(TagBase* tag) noexcept : tag_(tag) {}
    TagPlace(TagPlace const&) = delete;
    TagPlace& operator=(TagPlace const&) = delete;
    TagPlace(TagPlace&&) = delete;
    TagPlace& operator=(TagPlace&&) = delete;
    ~TagPlace() { leave(); }

private:
    friend class TagRegistry;

    void leave() noexcept;

    TagBase* tag_;
    TagPlace* previous_ = this; // the neighbours in the ring; a tag that is not registered is alone in its own
    TagPlace* next_ = this;
};

/**
 * The tags of a protocol in the order of their creation.
 *
 * The tags themselves are linked to a ring: adding one needs no memory, removing one no search. The registry does not
 * own its tags.
 */
class TagRegistry {
public:
    /** Puts a tag behind all others; one that is in a registry already stays where it is. */
    void append(TagPlace& place) noexcept;

    /** Removes and answers the tag that was appended before all others; null when there is none. */
    TagBase* takeFirst() noexcept;

private:
    TagPlace end_{nullptr}; // closes the ring
};
