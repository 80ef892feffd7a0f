#pragma once

#include <bitset>
#include <iterator>
#include <string>
#include <vector>

#include "tools/output/Output.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Puts records into words: every field by its name, with its unit where one is known, and of an
// array the elements in use.
class ShowSink : public RecordSink {
public:
    struct Choice {
        FrameRange frames{0, UINT32_MAX};
        uint32_t session = 0;             // 0: all
        std::vector<std::string> fields;  // of the layout, or single columns; none: all
    };

    // The first name in `fields` that no field and no column has; empty when there is none.
    static std::string unknownField(const std::vector<std::string>& fields);

    explicit ShowSink(const Choice& choice);

    void beginFile(const DumpFile& file) override { mPath = file.path; }
    void add(const Record& record) override;
    void endSession(const SessionSummary&) override {}
    void endFile(uint64_t, const DamageLog&) override {}
    bool finish() override;
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    void showColumn(const Column& column, const Record& record);
    void showArray(const ArrayField& array, const Record& record);

    const Choice mChoice;
    std::bitset<std::size(kItems)> mShown;
    Output mOutput;
    std::string mPath;  // empty where there was nothing to read
    uint64_t mFound = 0;
};

}  // namespace vdrdump
