#include "tools/read/DamageLog.h"

#include <cinttypes>
#include <utility>

#include "tools/output/Progress.h"

namespace vdrdump {

DamageLog::DamageLog(std::string file, std::FILE* out, Progress* progress)
      : mFile(std::move(file)), mOut(out), mProgress(progress) {}

bool DamageLog::add(Damage damage) {
    ++mCounts[static_cast<size_t>(damage)];
    ++mTotal;
    return mOut != nullptr && mTotal <= kDescribed;
}

void DamageLog::describe(uint64_t offset, const std::string& expected) {
    if (mProgress != nullptr) {
        mProgress->clear();
    }
    std::fprintf(mOut, "vdrdump: %s: offset %" PRIu64 ": expected %s\n", mFile.c_str(), offset,
                 expected.c_str());
}

void DamageLog::finish() const {
    if (mOut != nullptr && mTotal > kDescribed) {
        std::fprintf(mOut, "vdrdump: %s: %" PRIu64 " further faults, not listed\n", mFile.c_str(),
                     mTotal - kDescribed);
    }
}

}  // namespace vdrdump
