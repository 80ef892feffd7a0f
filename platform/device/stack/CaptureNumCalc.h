#pragma once

#include <cstdint>

namespace KoOrn {

class CaptureNumCalc {
public:
    void Init();
    uint32_t CountUsedMem() const;
    void UnInit();
};

}  // namespace KoOrn
