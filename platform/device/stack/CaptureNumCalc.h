#pragma once

#include <cstdint>

// In the place of the camera stack's own header: what platform/device/ takes for granted of it.
namespace KoOrn {

class CaptureNumCalc {
public:
    void Init();
    uint32_t CountUsedMem() const;
    void UnInit();
};

}  // namespace KoOrn
