#include <unistd.h>

#include <atomic>

#include "platform/CaptureNumCalc.h"
#include "platform/Ion.h"
#include "platform/ORNProxy.h"
#include "platform/ThermalService.h"
#include "platform/host/DeviceControl.h"

namespace {

std::atomic<bool> observerWithheld{false};
std::atomic<uint32_t> captureMemory{0};
std::atomic<int> openCounters{0};
std::atomic<uint32_t> firstAppFrameNumber{0};

// Never destroyed: the sampler may read it while the process ends.
const std::shared_ptr<CameraHalThermal::ThermalEscapeObserver>& observer() {
    static auto* instance = new std::shared_ptr<CameraHalThermal::ThermalEscapeObserver>(
            std::make_shared<CameraHalThermal::ThermalEscapeObserver>());
    return *instance;
}

}  // namespace

namespace zk::host {

void setThermalStateWord(uint32_t word) {
    observer()->setStateWord(word);
}

void withholdThermalObserver(bool withhold) {
    observerWithheld = withhold;
}

void setCaptureMemory(uint32_t usedMemory) {
    captureMemory = usedMemory;
}

int openCaptureCounters() {
    return openCounters;
}

void setFirstAppFrameNumber(uint32_t frameNumber) {
    firstAppFrameNumber = frameNumber;
}

}  // namespace zk::host

namespace CameraHalThermal {

ThermalService* ThermalService::GetInstance() {
    static auto* service = new ThermalService;
    return service;
}

std::shared_ptr<ThermalEscapeObserver> ThermalService::GetThermalEscapeObserver(
        const std::string& key) {
    return observerWithheld || key != "thermalLevel" ? nullptr : observer();
}

}  // namespace CameraHalThermal

namespace KoOrn {

void CaptureNumCalc::Init() {
    ++openCounters;
}

uint32_t CaptureNumCalc::CountUsedMem() const {
    return captureMemory;
}

void CaptureNumCalc::UnInit() {
    --openCounters;
}

}  // namespace KoOrn

namespace Orn::Adapter::Common {

ORNProxy* ORNProxy::GetInstance() {
    static auto* proxy = new ORNProxy;
    return proxy;
}

uint32_t ORNProxy::GetFirstAppFrameNumber() const {
    return firstAppFrameNumber;
}

}  // namespace Orn::Adapter::Common

extern "C" int ion_close(int fd) {
    return close(fd);
}
