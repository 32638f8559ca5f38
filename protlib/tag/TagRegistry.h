#pragma once

class TagBase;

/** A tag's place in the registry of its protocol. Its destructor removes the tag from the registry. */
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
    TagPlace* previous_ = this; // the neighbours in the ring; an unregistered tag is a ring by itself
    TagPlace* next_ = this;
};

/**
 * The tags of a protocol in the order of their creation.
 *
 * The tags themselves are linked into a ring, so adding one needs no memory and removing one needs no search. The
 * registry does not own its tags.
 */
class TagRegistry {
public:
    /** Appends a tag after all others; one that is already in a registry stays where it is. */
    void append(TagPlace& place) noexcept;

    /** Removes and returns the tag that was appended first; null when there is none. */
    TagBase* takeFirst() noexcept;

private:
    TagPlace end_{nullptr}; // closes the ring
};
