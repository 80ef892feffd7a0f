#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/sink/RecordSink.h"

namespace vdrdump {

// What many files hold together.
struct InfoTotals {
    static constexpr size_t kMostLosses = 4096;

    struct FileLoss {
        Loss loss;
        std::string path;
        std::string time;
    };

    uint64_t files = 0;
    uint64_t damaged = 0;
    uint64_t records = 0;
    uint64_t sessions = 0;
    uint64_t losses = 0;
    std::vector<FileLoss> listed;  // the first ones

    void add(const DumpFile& file, const DumpEnd& end, uint64_t fileSessions) {
        ++files;
        damaged += end.damage.any() ? 1 : 0;
        records += end.records;
        sessions += fileSessions;
        losses += end.losses.count();
        for (const Loss& loss : end.losses.losses()) {
            if (listed.size() < kMostLosses) {
                listed.push_back({loss, file.path, file.time});
            }
        }
    }
};

}  // namespace vdrdump
