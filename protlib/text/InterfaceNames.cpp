#include "protlib/text/InterfaceNames.h"

#include <cstring>

bool CompareInterface(char const* a, char const* b) {
    return a != nullptr && b != nullptr && std::strcmp(a, b) == 0;
}
