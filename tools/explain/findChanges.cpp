#include "tools/explain/findChanges.h"

namespace vdrdump {
namespace {

struct State {
    Change::What what;
    size_t offset;
    size_t size;
};

constexpr size_t kStatus = offsetof(Layout, sysStatusInfo);
constexpr State kThermal = {Change::What::ThermalLevel,
                            kStatus + offsetof(vdr2::SysStatusInfo, thermalLevel), 1};
constexpr State kStates[] = {
        {Change::What::Camera, offsetof(Layout, masterCameraId), 1},
        {Change::What::SensorMode, offsetof(Layout, sensorModeIndex), 1},
        {Change::What::CaptureType, offsetof(Layout, captureType), 1},
        kThermal,
        {Change::What::Scene, kStatus + offsetof(vdr2::SysStatusInfo, sceneMode), 2},
};

// -1: not known, as the record ends before it.
int valueOf(const Record& record, const State& state) {
    if (record.known < state.offset + state.size) {
        return -1;
    }
    return state.size == 1 ? record.bytes[state.offset] : record.read<uint16_t>(state.offset);
}

std::optional<Change> changeOf(const State& state, const Record& before, const Record& record) {
    const int from = valueOf(before, state);
    const int to = valueOf(record, state);
    if (from < 0 || to < 0 || from == to) {
        return std::nullopt;
    }
    return Change{state.what, record.frame(), from, to};
}

int directionOf(const Record& before, const Record& record) {
    const auto from = before.read<float>(offsetof(Layout, zoomRatio));
    const auto to = record.read<float>(offsetof(Layout, zoomRatio));
    return to > from ? 1 : to < from ? -1 : 0;
}

}  // namespace

std::vector<Change> findChanges(const FrameMap& frames, const FrameRange& range) {
    std::vector<Change> changes;
    const Record* before = nullptr;
    std::optional<int> direction;
    for (const auto& [frame, stored] : frames) {
        const Record& record = stored->view();
        const bool isIn = frame >= range.first && frame <= range.last;
        const bool isKnown = before != nullptr &&
                             record.known >= offsetof(Layout, videoAction) + sizeof(uint8_t);
        for (const State& state : kStates) {
            const auto change = isKnown ? changeOf(state, *before, record) : std::nullopt;
            if (change && isIn) {
                changes.push_back(*change);
            }
        }
        if (const int now = isKnown ? directionOf(*before, record) : 0; isKnown) {
            if (direction && now != *direction && isIn) {
                changes.push_back({Change::What::ZoomDirection, frame, *direction, now});
            }
            direction = now;
        }
        if (const int mark = record.bytes[offsetof(Layout, videoAction)]; mark != 0 && isIn) {
            changes.push_back({Change::What::VideoMark, frame, 0, mark});
        }
        before = &record;
    }
    return changes;
}

std::optional<Change> findThermalRise(const FrameMap& frames, uint32_t upTo) {
    std::optional<Change> rise;
    const Record* before = nullptr;
    for (const auto& [frame, stored] : frames) {
        if (frame > upTo) {
            break;
        }
        const auto change =
                before == nullptr ? std::nullopt : changeOf(kThermal, *before, stored->view());
        if (change && change->to > change->from) {
            rise = change;
        }
        before = &stored->view();
    }
    return rise;
}

}  // namespace vdrdump
