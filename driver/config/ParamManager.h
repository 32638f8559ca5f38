#pragma once

#include "driver/config/CommonParams.h"
#include "driver/config/NodeParams.h"

#include <list>
#include <string>

namespace _VELK {

/**
 * The driver's configuration: one record for the line and one for each node.
 *
 * Records keep their addresses for the life of the manager, so that tags can refer to them across parse() calls.
 */
class ParamManager {
public:
    /**
     * Reads a configuration string. False, with the reason in getLastError(), at the first fault.
     *
     * Records of an earlier call are kept and take precedence: a second call replaces the common record and the
     * defaults only.
     */
    bool parse(char const* configuration);

    /** The record of a node, or the defaults when it has no record. Never null. */
    [[nodiscard]] NodeParams const* getNodeParams(int nodeId) const;

    [[nodiscard]] CommonParams const* getCommonParams() const { return &common_; }

    /** Message of the last failed parse(), empty when none failed. */
    [[nodiscard]] char const* getLastError() const { return lastError_.c_str(); }

private:
    std::list<NodeParams> nodes_;
    NodeParams defaults_;
    CommonParams common_;
    std::string lastError_;
};

} // namespace _VELK
