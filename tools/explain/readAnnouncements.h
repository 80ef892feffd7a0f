#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vdrdump {

// A loss as the recorder's log tells of it.
struct Announcement {
    uint32_t frame = 0;
    std::string time;  // as the log has it, "11-21 21:30:42.123"; empty where it has none
};

// Those in a log as logcat prints it, in order, each frame once. Throws std::runtime_error, which
// says what was expected, where the log cannot be read.
std::vector<Announcement> readAnnouncements(const std::string& path);
// One line of it; false for all others.
bool isAnnouncement(const std::string& line, Announcement& announcement);

}  // namespace vdrdump
