#include "platform/ORNProxy.h"

#include <atomic>

#include "platform/host/DeviceControl.h"

namespace {

std::atomic<uint32_t> firstAppFrameNumber{0};

}  // namespace

void zk::host::setFirstAppFrameNumber(uint32_t frameNumber) {
    firstAppFrameNumber = frameNumber;
}

namespace Orn::Adapter::Common {

ORNProxy* ORNProxy::GetInstance() {
    static auto* proxy = new ORNProxy;
    return proxy;
}

uint32_t ORNProxy::GetFirstAppFrameNumber() const {
    return firstAppFrameNumber;
}

}  // namespace Orn::Adapter::Common
