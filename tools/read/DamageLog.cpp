#include "tools/read/DamageLog.h"

#include <cinttypes>
#include <utility>

#include "tools/output/Progress.h"

namespace vdrdump {

DamageLog::DamageLog(std::string file, std::FILE* out, Progress* progress)
      : mFile(std::move(file)), mOut(out), mProgress(progress) {}

bool DamageLog::add(Damage damage, uint64_t times) {
    mCounts[static_cast<size_t>(damage)] += times;
    mTotal += times;
    if (mDescribed == kMostDescribed) {
        mUnlisted += times;
        return false;
    }
    ++mDescribed;
    return mOut != nullptr;
}

void DamageLog::describe(uint64_t offset, const std::string& expected) {
    if (mProgress != nullptr) {
        mProgress->clear();
    }
    std::fprintf(mOut, "vdrdump: %s: offset %" PRIu64 ": expected %s\n", mFile.c_str(), offset,
                 expected.c_str());
}

void DamageLog::finish() const {
    if (mOut != nullptr && mUnlisted != 0) {
        std::fprintf(mOut, "vdrdump: %s: %" PRIu64 " further faults, not listed\n", mFile.c_str(),
                     mUnlisted);
    }
}

}  // namespace vdrdump
