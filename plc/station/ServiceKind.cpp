#include "plc/station/ServiceKind.h"

namespace plc {

ServiceKind serviceOf(ByteView request) {
    if (request.empty()) {
        return ServiceKind::kUnknown;
    }
    switch (auto const service = static_cast<ServiceKind>(request[0])) {
    case ServiceKind::kLogin:
    case ServiceKind::kLogout:
    case ServiceKind::kReadList:
    case ServiceKind::kFileOpen:
    case ServiceKind::kFileNext:
    case ServiceKind::kWriteList:
    case ServiceKind::kLinkCheck:
        return service;
    case ServiceKind::kUnknown:
        break;
    }
    return ServiceKind::kUnknown;
}

std::string_view nameOf(ServiceKind service) {
    switch (service) {
    case ServiceKind::kLogin:
        return "login";
    case ServiceKind::kLogout:
        return "logout";
    case ServiceKind::kReadList:
        return "read_list";
    case ServiceKind::kFileOpen:
        return "file_open";
    case ServiceKind::kFileNext:
        return "file_next";
    case ServiceKind::kWriteList:
        return "write_list";
    case ServiceKind::kLinkCheck:
        return "link_check";
    case ServiceKind::kUnknown:
        break;
    }
    return "unknown";
}

} // namespace plc
