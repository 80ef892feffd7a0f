#pragma once

#include <cstdint>

namespace Orn::Adapter::Common {

// Relates the application's frame numbers to those of the camera stack. Any thread.
class ORNProxy {
public:
    static ORNProxy* GetInstance();
    // The camera stack's frame number at which the application's numbering starts.
    uint32_t GetFirstAppFrameNumber() const;

private:
    ORNProxy() = default;
};

}  // namespace Orn::Adapter::Common
