#include "protlib/TagRegistry.h"

TagPlace::~TagPlace() {
    previous_->next_ = next_;
    next_->previous_ = previous_;
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
