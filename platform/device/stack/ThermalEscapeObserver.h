#pragma once

#include <cstdint>

namespace CameraHalThermal {

class ThermalEscapeObserver {
public:
    uint32_t GetState() const;
};

}  // namespace CameraHalThermal
