// Both readers, and everything that looks at what they give, over any bytes. Besides crashes and
// wild reads it looks for readers that do not come to an end or give a record that breaks the
// promises of tools/record/Record.h.

#include <cstdlib>

#include "tools/plot/SessionCurves.h"
#include "tools/read/MemorySource.h"
#include "tools/record/ColumnText.h"
#include "tools/session/SessionStatistics.h"
#include "tools/sink/DumpPass.h"

namespace {

class CheckingSink : public vdrdump::RecordSink {
public:
    void beginFile(const vdrdump::DumpFile&) override {}
    void add(const vdrdump::Record& record) override {
        const bool isInOrder = mRecords == 0 || record.index > mLastIndex;
        if (!isInOrder || record.known < sizeof(uint32_t) ||
            record.known > sizeof(vdrdump::Layout) || record.session == 0) {
            std::abort();
        }
        mLastIndex = record.index;
        ++mRecords;
        mStatistics.add(record);
        mCurves.add(record);
        for (const vdrdump::ArrayField* array : vdrdump::kArrays) {
            const size_t end = array->offset + record.elements(*array) * array->elementSize;
            if (end > sizeof(vdrdump::Layout)) {
                std::abort();
            }
        }
        for (const vdrdump::Item& item : vdrdump::kItems) {
            if (item.column.kind == vdrdump::Kind::Text) {
                vdrdump::nameAt(item.column, record.bytes + item.column.offset);
            }
        }
    }
    void endSession(const vdrdump::SessionSummary& session) override {
        mInSessions += session.records;
        if (session.first > session.last || session.repeated + session.late > session.records) {
            std::abort();
        }
    }
    void endFile(const vdrdump::DumpEnd& end) override {
        if (end.records != mRecords || mInSessions != mRecords) {
            std::abort();
        }
        mCurves.finish();
    }
    bool finish() override { return true; }
    bool isDone() const override { return false; }

private:
    uint64_t mRecords = 0;
    uint64_t mInSessions = 0;
    uint64_t mLastIndex = 0;
    vdrdump::SessionStatistics mStatistics;
    vdrdump::SessionCurves mCurves{{}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vdrdump::Progress progress({}, false);
    CheckingSink sink;
    vdrdump::MemorySource source(data, size);
    vdrdump::DumpPass(sink, progress, nullptr).readSource("dump", source);
    return 0;
}
