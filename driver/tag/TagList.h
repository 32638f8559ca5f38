#pragma once

#include "driver/tag/Tag_VELK.h"

/** Whether there are @p count tags, and at least one: tags[0] decides on the node even of an empty list. */
bool areTags(ITag const* const* tags, int count);

/** The driver's view of a tag that the host hands back: every tag that reaches the driver is one of its own. */
inline Tag_VELK const& velkTag(ITag const& tag) {
    return static_cast<Tag_VELK const&>(tag);
}
