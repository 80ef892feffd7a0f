#include "platform/thermalStateWord.h"

#include <ThermalEscapeObserver.h>

// To be adapted: the header's name, and the call that returns the state without asking the service.

namespace zk::platform {

uint32_t thermalStateWord(const CameraHalThermal::ThermalEscapeObserver& observer) {
    return observer.GetState();
}

}  // namespace zk::platform
