#include "demo/StatusTrack.h"

#include <iterator>

namespace demo {

void StatusTrack::note(uint32_t frame, const Bytes& status) {
    if (mFrom.empty() || mFrom.rbegin()->second != status) {
        mFrom.emplace(frame, status);
    }
}

StatusTrack::Bytes StatusTrack::at(uint32_t frame) const {
    const auto next = mFrom.upper_bound(frame);
    return next != mFrom.begin() ? std::prev(next)->second : Bytes{};
}

}  // namespace demo
