#pragma once

#include <cstdint>

// In the place of the camera stack's own header: what platform/device/ takes for granted of it.
namespace CameraHalThermal {

class ThermalEscapeObserver {
public:
    uint32_t GetState() const;
};

}  // namespace CameraHalThermal
