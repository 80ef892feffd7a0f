#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "integrations/gstreamer/FrameTrace.h"

namespace vdrgst {

// Who is told of frames. Called on streaming threads, one call at a time.
class FrameReceiver {
public:
    virtual void nodeAppeared(NodeIndex node, const std::string& name, bool isSink) = 0;
    virtual void frameBorn(uint32_t number) = 0;
    // In the order of the numbers, each once.
    virtual void frameThrough(std::unique_ptr<FrameTrace> trace) = 0;
    // An empty one, used before where there is one.
    virtual std::unique_ptr<FrameTrace> spareTrace() = 0;

protected:
    ~FrameReceiver() = default;
};

}  // namespace vdrgst
