#include "driver/tag/TagList.h"

bool areTags(ITag const* const* tags, int count) {
    if (tags == nullptr || count < 0 || tags[0] == nullptr) {
        return false;
    }
    for (int i = 1; i < count; ++i) {
        if (tags[i] == nullptr) {
            return false;
        }
    }
    return true;
}
