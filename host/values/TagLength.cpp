#include "host/values/TagLength.h"

#include "host/values/Counted.h"
#include "interfaces/ITag.h"

#include <cstddef>
#include <string>
#include <utility>

namespace host {

namespace {

base::Failure unreachable(std::string text) {
    return {base::FailureKind::Unreachable, std::move(text)};
}

} // namespace

base::Outcome checkLength(ITag const& tag) {
    if (tag.GetVarLength() < 0) {
        return unreachable("the tag has a negative length");
    }
    if (tag.GetVarLength() == 0) {
        return unreachable("its length is 0: the type needs a count, as in string-20 or short-10");
    }
    if (int const length = tag.PackedLen(); length > kMostValueBytes) {
        return unreachable("its " + counted(static_cast<std::size_t>(length), "byte") + " are more than the " +
                           std::to_string(kMostValueBytes) + " that fit one response");
    }
    return {};
}

} // namespace host
