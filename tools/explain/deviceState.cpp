#include "tools/explain/deviceState.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

using Status = vdr2::SysStatusInfo;
constexpr size_t kStatus = offsetof(Layout, sysStatusInfo);

// What moves all the time has moved when it is off by this part of where it was.
struct Watched {
    size_t offset;
    double part;
    double least;  // and by this much
};
constexpr Watched kWatched[] = {
        {kStatus + offsetof(Status, loadAvg1), 0.25, 1},
        {kStatus + offsetof(Status, cpuUsage), 0.25, 10},
        {kStatus + offsetof(Status, memFree), 0.2, 0},
        {kStatus + offsetof(Status, memAvailable), 0.1, 0},
        {kStatus + offsetof(Status, usedMem), 0.1, 0},
        {kStatus + offsetof(Status, shellFrontTemp), 0.03, 1},
        {kStatus + offsetof(Status, shellBackTemp), 0.03, 1},
        {kStatus + offsetof(Status, shellFrameTemp), 0.03, 1},
        {kStatus + offsetof(Status, cpu0Freq), 0.3, 0},
        {kStatus + offsetof(Status, cpu4Freq), 0.3, 0},
        {kStatus + offsetof(Status, cpu7Freq), 0.3, 0},
};

std::optional<DeviceMove> moveOf(const Watched& watched, const FrameMap& frames, uint32_t upTo) {
    std::optional<DeviceMove> move;
    const Column* const column = columnAt(watched.offset);
    for (const auto& [frame, stored] : frames) {
        const Record& record = stored->view();
        if (frame > upTo || !record.knows(*column)) {
            continue;
        }
        const double value = numberAt(*column, record.bytes + column->offset);
        if (!std::isfinite(value)) {
            continue;
        }
        if (!move) {
            move = DeviceMove{column, frame, frame, value, value};
        } else if (std::fabs(value - move->from) > std::fabs(move->to - move->from)) {
            move->to = value;
            move->toFrame = frame;
        }
    }
    const double distance = move ? std::fabs(move->to - move->from) : 0;
    // A 0 is a value that was not there yet.
    const bool hasMoved = move && move->from != 0 && move->to != 0 && distance >= watched.least &&
                          distance > watched.part * std::fabs(move->from);
    return hasMoved ? move : std::nullopt;
}

// What an answer rests on, and what to call it when there is none of it.
struct Source {
    const char* name;
    size_t offset;
    size_t size;
};
constexpr size_t kMotion = offsetof(Layout, setGmeNcsDep);
constexpr Source kSources[] = {
        {"frame stamps", offsetof(Layout, cslInfo) + offsetof(vdr2::CslInfo, stamp), 8},
        {"nodes", kNodes.countOffset, 1},
        {"plug-in costs", kPluginCosts.countOffset, 1},
        {"semantic costs", kSemantCosts.countOffset, 1},
        {"feature requests", kRequests.countOffset, 1},
        {"feature messages", kMessages.countOffset, 1},
        {"motion stamps", kMotion, offsetof(Layout, ae_af_awb_info) - kMotion},
        {"camera", offsetof(Layout, masterCameraId), 1},
        {"sensor mode", offsetof(Layout, sensorModeIndex), 1},
        {"capture type", offsetof(Layout, captureType), 1},
        {"zoom", offsetof(Layout, zoomRatio), 4},
        {"scene", kStatus + offsetof(Status, sceneMode), 2},
        {"thermal level", kStatus + offsetof(Status, thermalLevel), 1},
        {"frequencies", kStatus + offsetof(Status, cpu0Freq), 12},
        {"camera load", kStatus + offsetof(Status, cpuUsage), 2},
        {"load average", kStatus + offsetof(Status, loadAvg1), 4},
        {"front temperature", kStatus + offsetof(Status, shellFrontTemp), 4},
        {"back temperature", kStatus + offsetof(Status, shellBackTemp), 4},
        {"frame temperature", kStatus + offsetof(Status, shellFrameTemp), 4},
        {"free memory", kStatus + offsetof(Status, memFree), 4},
        {"available memory", kStatus + offsetof(Status, memAvailable), 4},
        {"capture memory", kStatus + offsetof(Status, usedMem), 4},
};

bool isZero(const Record& record, const Source& source) {
    const uint8_t* const at = record.bytes + source.offset;
    return std::all_of(at, at + source.size, [](uint8_t byte) { return byte == 0; });
}

}  // namespace

std::vector<SlowAllocation> findAllocations(const FrameMap& frames, const FrameRange& range) {
    std::vector<SlowAllocation> allocations;
    vdr2::MemoryAllocTimeoutInfo last{};
    for (auto at = frames.lower_bound(range.first); at != frames.end() && at->first <= range.last;
         ++at) {
        const Record& record = at->second->view();
        const auto info =
                record.read<vdr2::MemoryAllocTimeoutInfo>(offsetof(Layout, memoryAllocTimeoutInfo));
        const bool isThere = info.itemName[0] != '\0' || info.allocTimeSec != 0;
        if (isThere && std::memcmp(&info, &last, sizeof(info)) != 0) {
            const Column* name = columnAt(offsetof(Layout, memoryAllocTimeoutInfo));
            allocations.push_back({at->first, nameAt(*name, record.bytes + name->offset),
                                   info.allocSizeKB, info.allocTimeSec});
        }
        last = info;
    }
    return allocations;
}

std::vector<DeviceMove> findDeviceMoves(const FrameMap& frames, uint32_t upTo) {
    std::vector<DeviceMove> moves;
    for (const Watched& watched : kWatched) {
        if (const auto move = moveOf(watched, frames, upTo)) {
            moves.push_back(*move);
        }
    }
    return moves;
}

std::vector<std::string> notKnown(const FrameMap& frames) {
    std::vector<std::string> names;
    for (const Source& source : kSources) {
        const bool isKnown = std::any_of(frames.begin(), frames.end(), [&source](const auto& each) {
            return !isZero(each.second->view(), source);
        });
        if (!isKnown) {
            names.emplace_back(source.name);
        }
    }
    return names;
}

}  // namespace vdrdump
