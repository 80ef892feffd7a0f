#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vdrdump {

// The lost frame's number in the name of a frame-loss text file,
// VIDEO_DEBUG_<date>_<time>_<number>.txt; none in other names.
std::optional<uint32_t> lostFrameOf(const std::string& path);

}  // namespace vdrdump
