#pragma once

#include "driver/tag/Tag_VELK.h"

/** Whether there are @p count tags, and at least one: tags[0] decides the node even of an empty list. */
bool areTags(ITag const* const* tags, int count);

/** The driver's type of a tag that the host passes in: every tag that the driver receives was created by it. */
inline Tag_VELK const& velkTag(ITag const& tag) {
    return static_cast<Tag_VELK const&>(tag);
}
