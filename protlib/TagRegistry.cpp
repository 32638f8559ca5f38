#include "protlib/TagRegistry.h"

void TagPlace::leave() noexcept {
    previous_->next_ = next_;
    next_->previous_ = previous_;
    previous_ = this;
    next_ = this;
}

void TagRegistry::append(TagPlace& place) noexcept {
    if (place.next_ != &place) {
        return;
    }
    place.previous_ = end_.previous_;
    place.next_ = &end_;
    end_.previous_->next_ = &place;
    end_.previous_ = &place;
}

TagBase* TagRegistry::takeFirst() noexcept {
    TagPlace& first = *end_.next_;
    first.leave();
    return first.tag_;
}
