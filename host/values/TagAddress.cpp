#include "host/values/TagAddress.h"

#include <algorithm>
#include <array>
#include <utility>

namespace host {

namespace {

bool isCarried(char c) {
    constexpr unsigned char kDelete = 0x7F;
    auto const byte = static_cast<unsigned char>(c);
    return c != '?' && byte >= ' ' && byte != kDelete;
}

} // namespace

base::Result<std::string> tagAddress(TagAddress const& fields) {
    using Field = std::pair<char const*, std::string const*>;
    std::array const texts = {Field{"name", &fields.name}, Field{"address space", &fields.addressSpace},
                              Field{"offset", &fields.offset}, Field{"data type", &fields.dataType}};
    std::string address = std::to_string(fields.node);
    for (auto const& [label, text] : texts) {
        if (!std::all_of(text->begin(), text->end(), isCarried)) {
            return base::Failure{base::FailureKind::Request,
                                 "the " + std::string(label) + " of a tag must not contain ? or control characters"};
        }
        address += "?" + *text;
    }
    return address;
}

} // namespace host
