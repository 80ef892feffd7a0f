#pragma once

#include <vector>

#include "tools/names/NodeNames.h"
#include "tools/record/Record.h"

namespace vdrdump {

// A node as a record tells of it. The stamps are of one clock; 0: it never happened.
struct NodeStamps {
    NodeIds ids{};
    uint64_t queued = 0;
    uint64_t started = 0;
    uint64_t finished = 0;
    uint64_t handedOn = 0;

    // 0 where there is none.
    uint64_t first() const { return queued != 0 ? queued : started != 0 ? started : finished; }
    uint64_t workEnd() const { return finished != 0 ? finished : handedOn; }
    uint64_t last() const { return std::max({queued, started, finished, handedOn}); }
};

// In the order of the record, which is the order in which a frame comes through.
std::vector<NodeStamps> nodesOf(const Record& record);

}  // namespace vdrdump
