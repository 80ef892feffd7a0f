#include "tools/explain/nodesOf.h"

namespace vdrdump {

std::vector<NodeStamps> nodesOf(const Record& record) {
    std::vector<NodeStamps> nodes;
    const size_t count = record.elements(kNodes);
    for (size_t i = 0; i < count; ++i) {
        const auto info = record.read<vdr2::NodeInfo>(kNodes.offset + i * kNodes.elementSize);
        nodes.push_back({{info.ids[0], info.ids[1], info.ids[2]},
                         info.stamps[0],
                         info.stamps[1],
                         info.stamps[2],
                         info.stamps[3]});
    }
    return nodes;
}

}  // namespace vdrdump
