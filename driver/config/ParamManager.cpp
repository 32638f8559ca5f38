#include "driver/config/ParamManager.h"

#include "protlib/config/ConfigParser.h"

namespace _VELK {

bool ParamManager::parse(char const* configuration) {
    CfgParser parser(configuration);
    if (!parser.KnownFormat()) {
        lastError_ = "Parser: unknown format";
        return false;
    }
    if (!defaults_.parse(parser, CfgParser::kAnyNode, lastError_)) {
        return false;
    }
    for (int index = 0; index < parser.GetNodeCount(); ++index) {
        NodeParams node = defaults_;
        node.nodeId = parser.GetNodeID(index);
        if (!node.parse(parser, node.nodeId, lastError_)) {
            return false;
        }
        nodes_.push_back(node);
    }
    return common_.parse(parser, lastError_);
}

NodeParams const* ParamManager::getNodeParams(int nodeId) const {
    for (NodeParams const& node : nodes_) {
        if (node.nodeId == nodeId) {
            return &node;
        }
    }
    return &defaults_;
}

} // namespace _VELK
