#include "tools/plot/Panel.h"

#include <cstddef>

#include "tools/record/Record.h"

namespace vdrdump {
namespace {

constexpr float kGHz = 1e-6F;
constexpr float kMiB = 1.0F / 1024;

const Column* columnAt(size_t offset) {
    for (const Item& item : kItems) {
        if (item.array == nullptr && item.column.offset == offset) {
            return &item.column;
        }
    }
    return nullptr;
}

#define VDR_STATUS_AT(member) \
    columnAt(offsetof(Layout, sysStatusInfo) + offsetof(vdr2::SysStatusInfo, member))

std::vector<Panel> usualPanels() {
    return {
            {"frequency, GHz",
             {{VDR_STATUS_AT(cpu0Freq), kGHz, "cpu0"},
              {VDR_STATUS_AT(cpu4Freq), kGHz, "cpu4"},
              {VDR_STATUS_AT(cpu7Freq), kGHz, "cpu7"}},
             {},
             ""},
            {"camera load, %",
             {{VDR_STATUS_AT(cpuUsage), 1, "camera load"}},
             {{VDR_STATUS_AT(loadAvg1), 1, "1 minute (right)"},
              {VDR_STATUS_AT(loadAvg5), 1, "5 minutes (right)"},
              {VDR_STATUS_AT(loadAvg15), 1, "15 minutes (right)"}},
             "load average"},
            {"memory, MiB",
             {{VDR_STATUS_AT(memFree), kMiB, "free"},
              {VDR_STATUS_AT(memAvailable), kMiB, "available"}},
             {{VDR_STATUS_AT(usedMem), 1, "captures (right)"}},
             "captures"},
            {"temperature",
             {{VDR_STATUS_AT(shellFrontTemp), 1, "shell front"},
              {VDR_STATUS_AT(shellBackTemp), 1, "shell back"},
              {VDR_STATUS_AT(shellFrameTemp), 1, "shell frame"}},
             {},
             ""},
            {"zoom ratio", {{columnAt(offsetof(Layout, zoomRatio)), 1, "zoom"}}, {}, ""},
            {"nodes per frame", {{columnAt(offsetof(Layout, nodeInfoCount)), 1, "nodes"}}, {}, ""},
    };
}

#undef VDR_STATUS_AT

}  // namespace

std::vector<Panel> panelsOf(const FieldChoice& fields) {
    if (fields.isAll()) {
        return usualPanels();
    }
    std::vector<Panel> panels;
    const char* field = "";
    for (size_t i = 1; i < std::size(kItems); ++i) {
        const Column& column = kItems[i].column;
        if (!fields.wants(i)) {
            continue;
        }
        if (std::string(field) != column.field) {
            field = column.field;
            panels.push_back({field, {}, {}, ""});
        }
        const std::string name = column.name;
        const std::string prefix = std::string(field) + "_";
        const std::string title = name.rfind(prefix, 0) == 0 ? name.substr(prefix.size()) : name;
        panels.back().traces.push_back(
                {&column, 1, column.unit[0] == '\0' ? title : title + ", " + column.unit});
    }
    return panels;
}

std::string fieldWithoutCurve(const FieldChoice& fields) {
    bool hasAny = fields.isAll();
    for (size_t i = 1; i < std::size(kItems) && !fields.isAll(); ++i) {
        const Item& item = kItems[i];
        if (fields.wants(i) && (item.array != nullptr || item.column.kind == Kind::Text)) {
            return item.column.name;
        }
        hasAny |= fields.wants(i);
    }
    return hasAny ? "" : kItems[0].column.name;
}

}  // namespace vdrdump
