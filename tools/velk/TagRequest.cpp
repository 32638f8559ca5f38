#include "tools/velk/TagRequest.h"

#include "tools/velk/Names.h"

namespace velk {

TagRequest parseTagRequest(std::string_view word, Settings const& settings) {
    TagRequest request;
    request.shown = word;
    request.node = settings.node;
    request.variable = word;
    request.isPattern = isPattern(word);
    return request;
}

} // namespace velk
