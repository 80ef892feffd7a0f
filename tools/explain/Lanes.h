#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vdrdump {

// Spans of time beside each other, so that none overlaps another of its lane. The lane that has
// been free for longest is not looked for: the first free one keeps a node that works on one frame
// at a time in one lane.
class Lanes {
public:
    size_t take(uint64_t from, uint64_t to) {
        size_t lane = 0;
        while (lane < mFreeAt.size() && mFreeAt[lane] >= from) {
            ++lane;
        }
        if (lane == mFreeAt.size()) {
            mFreeAt.push_back(0);
        }
        mFreeAt[lane] = to;
        return lane;
    }
    size_t count() const { return mFreeAt.size(); }

private:
    std::vector<uint64_t> mFreeAt;
};

}  // namespace vdrdump
