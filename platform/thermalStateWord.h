#pragma once

#include <cstdint>

namespace CameraHalThermal {
class ThermalEscapeObserver;
}

namespace zk::platform {

// The observer's current state; calls nobody. Bits 8 to 11: thermal level. Bits 2 and 3: escape
// state. Any thread.
uint32_t thermalStateWord(const CameraHalThermal::ThermalEscapeObserver& observer);

}  // namespace zk::platform
