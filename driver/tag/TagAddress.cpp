#include "driver/tag/TagAddress.h"

#include "protlib/text/TextUtils.h"

#include <utility>
#include <vector>

namespace _VELK {

namespace {

constexpr std::size_t kFieldCount = 5;
constexpr int kDetectBase = 0;

} // namespace

char const* splitTagAddress(std::string const& address, TagAddress& fields) {
    std::vector<std::string> pieces;
    ProtUtilsN::ParseSubstrings(address, pieces, '?');
    if (pieces.size() != kFieldCount) {
        return "there must be 5 tag specification fields";
    }
    fields = {std::move(pieces[0]), std::move(pieces[1]), std::move(pieces[2]), std::move(pieces[3]),
              std::move(pieces[4])};
    if (fields.variable.empty()) {
        return "tagname field missing";
    }
    if (fields.addressSpace.empty()) {
        return "addressSpace field missing";
    }
    if (fields.offset.empty()) {
        fields.offset = "0";
    }
    return fields.dataType.empty() ? "icomType field missing" : nullptr;
}

TagOffset readTagOffset(std::string const& offset) {
    std::size_t const point = offset.find('.');
    if (point == std::string::npos) {
        return {ProtUtilsN::parseInteger(offset.c_str(), kDetectBase), 0};
    }
    return {ProtUtilsN::parseInteger(offset.substr(0, point).c_str(), kDetectBase),
            ProtUtilsN::parseInteger(offset.c_str() + point + 1, kDetectBase)};
}

} // namespace _VELK
