#include "platform/ThermalService.h"

#include <atomic>

#include "platform/host/DeviceControl.h"
#include "platform/thermalStateWord.h"

namespace CameraHalThermal {

class ThermalEscapeObserver {
public:
    std::atomic<uint32_t> mStateWord{0};
};

}  // namespace CameraHalThermal

namespace {

using CameraHalThermal::ThermalEscapeObserver;

std::atomic<bool> observerWithheld{false};

// Never destroyed: the sampler may read it while the process ends.
const std::shared_ptr<ThermalEscapeObserver>& observer() {
    static auto* instance =
            new std::shared_ptr<ThermalEscapeObserver>(std::make_shared<ThermalEscapeObserver>());
    return *instance;
}

}  // namespace

void zk::host::setThermalStateWord(uint32_t word) {
    observer()->mStateWord = word;
}

void zk::host::withholdThermalObserver(bool withhold) {
    observerWithheld = withhold;
}

uint32_t zk::platform::thermalStateWord(const ThermalEscapeObserver& observer) {
    return observer.mStateWord;
}

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
