#include "plc/station/ListRequest.h"

#include "plc/frames/Text.h"
#include "plc/station/ServiceKind.h"

namespace plc {

namespace {

constexpr std::size_t kCountOffset = 2;
constexpr std::size_t kItemsOffset = 6;
constexpr std::size_t kDescriptorSize = 10;
constexpr std::size_t kProjectIdSize = 4;

ListItem parseDescriptor(ByteView bytes, ByteOrder order) {
    return {.area = loadOrdered<std::uint16_t>(bytes, 0, order),
            .offset = loadOrdered<std::uint32_t>(bytes, 2, order),
            .size = loadOrdered<std::uint32_t>(bytes, 6, order),
            .value = {}};
}

} // namespace

std::variant<ListRequest, std::string> parseListRequest(ByteView request, ByteOrder order) {
    if (request.size() < kItemsOffset + kProjectIdSize) {
        return textOf("a list request of ", request.size(), " bytes is too short");
    }
    if (request[1] != 0) {
        return textOf("byte 1 of a list request is ", request[1], " instead of 0");
    }
    bool const write = serviceOf(request) == ServiceKind::kWriteList;
    auto const count = loadOrdered<std::uint32_t>(request, kCountOffset, order);
    ByteView rest = request.subspan(kItemsOffset, request.size() - kItemsOffset - kProjectIdSize);
    ListRequest list;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (rest.size() < kDescriptorSize) {
            return textOf("a list request of ", request.size(), " bytes ends in item ", i, " of ", count);
        }
        ListItem item = parseDescriptor(rest, order);
        rest = rest.subspan(kDescriptorSize);
        if (write) {
            if (rest.size() < item.valueSize()) {
                return textOf("the value of item ", i, " has ", rest.size(), " bytes left instead of ",
                              item.valueSize());
            }
            item.value = rest.first(static_cast<std::size_t>(item.valueSize()));
            rest = rest.subspan(item.value.size());
        }
        list.items.push_back(item);
    }
    if (!rest.empty()) {
        return textOf(rest.size(), " bytes too many after the ", count, " items of a list request");
    }
    list.projectId = loadOrdered<std::uint32_t>(request, request.size() - kProjectIdSize, order);
    return list;
}

} // namespace plc
