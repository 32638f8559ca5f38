#include "symbols/TypeTable.h"

namespace _VELK {

void SDBTag::clear() noexcept {
    types.clear();
    types.shrink_to_fit();
    texts.clear();
}

} // namespace _VELK
