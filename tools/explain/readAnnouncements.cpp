#include "tools/explain/readAnnouncements.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string_view>

#include "tools/output/printablePath.h"

namespace vdrdump {
namespace {

constexpr std::string_view kTag = "VDRPERF";
constexpr std::string_view kAnnouncement = "rec frame drop notification:";

template <typename T>
bool takeNumber(std::string_view& text, T& number) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<size_t>(stop - text.data()));
    return error == std::errc();
}

// "11-21 21:30:42.123" in front, if it is there.
std::string timeOf(const std::string& line) {
    constexpr std::string_view kShape = "dd-dd dd:dd:dd.ddd";
    for (size_t i = 0; i < kShape.size(); ++i) {
        const char each = i < line.size() ? line[i] : '\0';
        if (kShape[i] == 'd' ? each < '0' || each > '9' : each != kShape[i]) {
            return "";
        }
    }
    return line.substr(0, kShape.size());
}

}  // namespace

bool isAnnouncement(const std::string& line, Announcement& announcement) {
    const size_t at = line.find(kAnnouncement);
    if (at == std::string::npos || line.find(kTag) > at) {
        return false;
    }
    std::string_view rest = std::string_view(line).substr(at + kAnnouncement.size());
    uint64_t timeStamp = 0;
    uint64_t frame = 0;
    if (!takeNumber(rest, timeStamp) || rest.substr(0, 1) != ",") {
        return false;
    }
    rest.remove_prefix(1);
    if (!takeNumber(rest, frame) || frame >= UINT32_MAX) {
        return false;
    }
    announcement = {static_cast<uint32_t>(frame), timeOf(line)};
    return true;
}

std::vector<Announcement> readAnnouncements(const std::string& path) {
    errno = 0;
    std::ifstream log(path, std::ios::binary);
    std::vector<Announcement> announcements;
    std::set<uint32_t> frames;
    std::string line;
    Announcement announcement;
    while (std::getline(log, line)) {
        if (isAnnouncement(line, announcement) && frames.insert(announcement.frame).second) {
            announcements.push_back(announcement);
        }
    }
    if (!log.eof()) {
        throw std::runtime_error(printablePath(path) +
                                 ": expected a log that can be read: " + std::strerror(errno));
    }
    return announcements;
}

}  // namespace vdrdump
