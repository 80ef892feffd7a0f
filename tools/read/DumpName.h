#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vdrdump {

// What the recorder says with the name of a dump, VIDEO_DEBUG_<date>_<time>.bin or, for a
// frame-loss text, VIDEO_DEBUG_<date>_<time>_<lost frame>.txt. Nothing where it was renamed.
struct DumpName {
    // Local time, "2024-03-01 12:00:00": when the session was opened, or the loss announced.
    std::string time;
    std::optional<uint32_t> lostFrame;

    static DumpName of(const std::string& path);
};

}  // namespace vdrdump
