// Both readers, and everything that looks at what they give, over any bytes. Besides crashes and
// wild reads it looks for readers that do not come to an end or give a record that breaks the
// promises of tools/record/Record.h.

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "tools/explain/SegmentCollector.h"
#include "tools/explain/analyseLoss.h"
#include "tools/explain/explanationJson.h"
#include "tools/explain/explanationText.h"
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
    vdrdump::SessionCurves mCurves{{}, std::nullopt};
};

constexpr uint32_t kLost = 8;
constexpr char kLossText[] = "VIDEO_DEBUG_20240301_120000_00000008.txt";

// From the bytes of a dump to the words that say why frames were lost.
void explain(const void* data, size_t size, std::optional<uint32_t> lost) {
    vdrdump::Progress progress({}, false);
    vdrdump::SegmentCollector collector(
            vdrdump::SegmentCollector::around(std::vector<uint32_t>{kLost}),
            lost ? std::nullopt : std::make_optional(vdrdump::FrameRange{0, UINT32_MAX}));
    vdrdump::MemorySource source(data, size);
    vdrdump::DumpPass(collector, progress, nullptr).readSource(kLossText, source);
    const vdrdump::LossCases found = vdrdump::makeLossCases(collector.segments(), {}, lost);
    vdrdump::Explanations explanations;
    for (const vdrdump::LossCase& each : found.cases) {
        explanations.losses.push_back(
                {each, vdrdump::analyseLoss(each.lost, each.history->frames)});
    }
    vdrdump::explanationText(explanations, {});
    vdrdump::explanationJson(explanations, {});
}

// Frames enough to compare one with the others: the last record of the input is the lost one, those
// before it are the others in turn, each with stamps of its own time.
std::string sessionOf(const uint8_t* data, size_t size) {
    constexpr uint64_t kInterval = 33333333;
    constexpr uint32_t kFrames = 16;
    const size_t last = size / zk::kFrameRecordSize - 1;
    std::string session;
    for (uint32_t frame = 1; frame <= kFrames; ++frame) {
        const size_t block = frame == kLost || last == 0 ? last : frame % last;
        vdrdump::Layout record;
        std::memcpy(&record, data + block * zk::kFrameRecordSize, sizeof(record));
        record.frameNumber = frame;
        record.cslInfo.stamp += frame * kInterval;
        for (vdr2::NodeInfo& node : record.nodeInfo) {
            uint64_t stamps[sizeof(node.stamps) / sizeof(uint64_t)];
            std::memcpy(stamps, node.stamps, sizeof(stamps));
            for (uint64_t& stamp : stamps) {
                stamp += stamp == 0 ? 0 : frame * kInterval;
            }
            std::memcpy(node.stamps, stamps, sizeof(stamps));
        }
        session.append(reinterpret_cast<const char*>(&record), sizeof(record));
        session.append(zk::kFrameRecordSize - sizeof(record), '\0');
    }
    return session;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vdrdump::Progress progress({}, false);
    CheckingSink sink;
    vdrdump::MemorySource source(data, size);
    vdrdump::DumpPass(sink, progress, nullptr).readSource("dump", source);
    explain(data, size, std::nullopt);
    if (size >= zk::kFrameRecordSize) {
        const std::string session = sessionOf(data, size);
        explain(session.data(), session.size(), kLost);
    }
    return 0;
}
