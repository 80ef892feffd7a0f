#pragma once

#include <cstdint>

namespace KoOrn {

// The camera stack's counter of the memory that captures hold. One thread at a time.
class CaptureNumCalc {
public:
    void Init();
    uint32_t CountUsedMem() const;
    void UnInit();
};

}  // namespace KoOrn
