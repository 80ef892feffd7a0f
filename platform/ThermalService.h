#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace CameraHalThermal {

// Kept up to date by the thermal service; reading it calls nobody. Any thread.
class ThermalEscapeObserver {
public:
    // Bits 8 to 11: thermal level. Bits 2 and 3: escape state.
    uint32_t stateWord() const { return mStateWord.load(std::memory_order_relaxed); }
    void setStateWord(uint32_t word) { mStateWord.store(word, std::memory_order_relaxed); }

private:
    std::atomic<uint32_t> mStateWord{0};
};

class ThermalService {
public:
    static ThermalService* GetInstance();
    // Null where the service watches nothing under `key`.
    std::shared_ptr<ThermalEscapeObserver> GetThermalEscapeObserver(const std::string& key);

private:
    ThermalService() = default;
};

}  // namespace CameraHalThermal
