#pragma once

#include <memory>
#include <string>

namespace CameraHalThermal {

// Kept up to date by the thermal service; platform/thermalStateWord.h reads it.
class ThermalEscapeObserver;

class ThermalService {
public:
    static ThermalService* GetInstance();
    // Null where the service watches nothing under `key`. Any thread.
    std::shared_ptr<ThermalEscapeObserver> GetThermalEscapeObserver(const std::string& key);

private:
    ThermalService() = default;
};

}  // namespace CameraHalThermal
