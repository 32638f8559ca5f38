#include "symbols/SymbolList.h"

namespace _VELK {

void SymbolListTag::clear() noexcept {
    index.reset();
    symbols.reset();
    texts.clear();
    count = 0;
    loaded = 0;
}

} // namespace _VELK
