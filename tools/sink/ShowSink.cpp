#include "tools/sink/ShowSink.h"

#include <cstdio>

#include "tools/sink/recordText.h"

namespace vdrdump {

void ShowSink::add(const Record& record) {
    ++mFound;
    mOutput.append("frame " + std::to_string(record.frame()) +
                   (record.isMisnumbered ? " (damaged)" : "") + ": session " +
                   std::to_string(record.session) + ", record " + std::to_string(record.index) +
                   ", offset " + std::to_string(record.offset) + "\n" +
                   recordText(record, mFields, mNames) + "\n");
}

bool ShowSink::finish() {
    const bool isWritten = mOutput.finish();
    if (mFound == 0 && mHadRecords) {
        reportNothingFound(mPath);
    }
    return isWritten && mFound != 0;
}

void reportNothingFound(const std::string& path) {
    std::fprintf(stderr, "vdrdump: %s: expected records of the frames asked for, found none\n",
                 path.c_str());
}

}  // namespace vdrdump
