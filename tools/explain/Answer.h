#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tools/explain/Explanation.h"

namespace vdrdump {

// What a reader is told about one loss.
struct LossLines {
    struct Line {
        std::string name;  // empty: goes on from the line above
        std::string text;
    };
    std::string headline;  // the likeliest cause
    std::vector<Line> lines;
};

// What a reader is told, whether in text or on a page: of several losses a line each first, then
// all lines of the first ones.
struct Answer {
    static constexpr size_t kMostInFull = 8;

    std::string count;              // "3 losses"; empty for one and for none
    std::vector<LossLines> losses;  // those with a line
    uint64_t more = 0;              // losses beyond those
    std::vector<std::string> remarks;

    size_t inFull() const { return std::min(losses.size(), kMostInFull); }
};

Answer answerOf(const Explanations& explanations, const NodeNames& names);

}  // namespace vdrdump
