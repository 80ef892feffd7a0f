#include "tools/plot/Panel.h"

#include <cstddef>
#include <string_view>

namespace vdrdump {
namespace {

constexpr double kGHz = 1e-6;
constexpr double kMiB = 1.0 / 1024;
constexpr std::string_view kStatusField = "sysStatusInfo";

Curve curve(const char* title, size_t offset, double factor = 1) {
    return {title, 0, {title, columnAt(offset)}, factor, false};
}

std::vector<Panel> devicePanels() {
    using Kind = Panel::Kind;
    using Status = vdr2::SysStatusInfo;
    constexpr size_t kStatus = offsetof(Layout, sysStatusInfo);
    return {
            {Kind::Sampled,
             {"camera load, %", {curve("camera load", kStatus + offsetof(Status, cpuUsage))}},
             {"load average, tasks",
              {curve("load average", kStatus + offsetof(Status, loadAvg1))}}},
            {Kind::Sampled,
             {"frequency, GHz",
              {curve("processor 0", kStatus + offsetof(Status, cpu0Freq), kGHz),
               curve("processor 4", kStatus + offsetof(Status, cpu4Freq), kGHz),
               curve("processor 7", kStatus + offsetof(Status, cpu7Freq), kGHz)}},
             {}},
            {Kind::Sampled,
             {"memory, MiB",
              {curve("free memory", kStatus + offsetof(Status, memFree), kMiB),
               curve("available memory", kStatus + offsetof(Status, memAvailable), kMiB)}},
             {"captures, as stated",
              {curve("memory of captures", kStatus + offsetof(Status, usedMem))}}},
            {Kind::Sampled,
             {"temperature, as stated",
              {curve("front temperature", kStatus + offsetof(Status, shellFrontTemp)),
               curve("back temperature", kStatus + offsetof(Status, shellBackTemp)),
               curve("frame temperature", kStatus + offsetof(Status, shellFrameTemp))}},
             {"thermal level, to 15",
              {curve("thermal level", kStatus + offsetof(Status, thermalLevel))}}},
            {Kind::Mode,
             {"number",
              {curve("camera", offsetof(Layout, masterCameraId)),
               curve("sensor mode", offsetof(Layout, sensorModeIndex)),
               curve("capture type", offsetof(Layout, captureType))}},
             {"zoom ratio", {curve("zoom", offsetof(Layout, zoomRatio))}}},
    };
}

// Of one field; curves that differ in their unit state it.
Panel fieldPanel(const std::string& field, std::vector<Curve> curves) {
    const std::string unit = curves.front().source.column->unit;
    bool isOneUnit = true;
    for (const Curve& each : curves) {
        isOneUnit &= unit == each.source.column->unit;
    }
    for (Curve& each : curves) {
        const std::string own = each.source.column->unit;
        each.title += isOneUnit || own.empty() ? "" : ", " + own;
    }
    Panel panel;
    panel.kind = field == kStatusField ? Panel::Kind::Sampled : Panel::Kind::EveryFrame;
    panel.left = {field + (isOneUnit && !unit.empty() ? ", " + unit : ""), std::move(curves)};
    return panel;
}

// "cpuUsage" of sysStatusInfo, "[3].stamps_2" of nodeInfo.
std::string titleWithin(const std::string& field, const std::string& name) {
    if (name.size() <= field.size() || name.rfind(field, 0) != 0) {
        return name;
    }
    return name.substr(field.size() + (name[field.size()] == '_' ? 1 : 0));
}

std::vector<Panel> fieldPanels(const FieldChoice& fields) {
    std::vector<Panel> panels;
    std::vector<Curve> curves;
    std::string field;
    const auto close = [&] {
        if (!curves.empty()) {
            panels.push_back(fieldPanel(field, std::move(curves)));
            curves.clear();
        }
    };
    for (ChosenValue& value : chosenValues(fields)) {
        const std::string owner = value.array != nullptr ? value.array->name : value.column->field;
        if (field != owner) {
            close();
            field = owner;
        }
        curves.push_back({titleWithin(field, value.name), 0, std::move(value), 1, false});
    }
    close();
    return panels;
}

}  // namespace

std::vector<Panel> columnPanels(const FieldChoice& fields) {
    std::vector<Panel> panels = fields.isAll() ? devicePanels() : fieldPanels(fields);
    size_t number = 0;
    for (Panel& panel : panels) {
        for (Axis* axis : {&panel.left, &panel.right}) {
            for (Curve& each : axis->curves) {
                each.number = number++;
            }
        }
    }
    return panels;
}

std::string fieldWithoutCurve(const FieldChoice& fields) {
    if (fields.isAll()) {
        return "";
    }
    if (std::string array = arrayAsAWhole(fields); !array.empty()) {
        return array;
    }
    const std::vector<ChosenValue> values = chosenValues(fields);
    for (const ChosenValue& value : values) {
        if (value.column->kind == Kind::Text) {
            return value.name;
        }
    }
    return values.empty() ? kItems[0].column.name : "";
}

}  // namespace vdrdump
