#pragma once

#include <string>
#include <vector>

#include "tools/output/Output.h"
#include "tools/record/ChosenValue.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// A line per record, a column per value, and behind each value what it differs by from the record
// before. Widths are those of the first lines, so that memory stays constant.
class TableSink : public RecordSink {
public:
    // Of single values.
    explicit TableSink(const FieldChoice& fields);

    void beginFile(const DumpFile& file) override { mPath = file.path; }
    void add(const Record& record) override;
    void endSession(const SessionSummary&) override {}
    void endFile(const DumpEnd& end) override { mHadRecords = end.records != 0; }
    bool finish() override;
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    static constexpr size_t kMeasured = 256;  // lines

    // Where the values of a column come from, and those of the record before.
    struct Source {
        std::string title;
        ChosenValue value;
        bool hasBefore = false;
        int64_t before = 0;
        double floatBefore = 0;
    };
    struct Cell {
        std::string value;
        std::string difference;
    };
    using Line = std::vector<Cell>;  // none: sessions meet here

    Cell cellOf(Source& source, const Record& record) const;
    std::string differenceOf(Source& source, const uint8_t* at) const;
    void addLine(Line line);
    void measure();
    void print(const Line& line);

    std::vector<Source> mSources;
    std::vector<size_t> mValueWidths;
    std::vector<size_t> mDifferenceWidths;
    std::vector<Line> mMeasured;
    bool mIsMeasured = false;
    uint32_t mSession = 0;
    Output mOutput;
    std::string mPath;
    bool mHadRecords = false;
    uint64_t mFound = 0;
};

}  // namespace vdrdump
