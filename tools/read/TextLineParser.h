#pragma once

#include <string>

#include "records/frameData.h"
#include "tools/record/RecordSchema.h"

namespace vdrdump {

// Turns one text line back into the record that it was printed from. A line that goes wrong in
// some column gives what stands before it.
class TextLineParser {
public:
    // The line without its newline. True when it holds the columns of a record and nothing else.
    bool parse(const char* begin, const char* end);

    const uint8_t* block() const { return mBlock; }
    // Bytes of the layout, from its front, that the line gave.
    size_t known() const { return mKnown; }
    // Where parsing stopped and what was expected there, after a parse() that failed.
    const char* stoppedAt() const { return mAt; }
    std::string expected() const;

private:
    bool array(const ArrayField& array);
    bool column(const Column& column, uint8_t* to);
    bool store(const Column& column, const char* begin, const char* end, uint8_t* to);

    const char* mAt = nullptr;
    const char* mEnd = nullptr;
    size_t mKnown = 0;
    const Column* mColumn = nullptr;     // that is parsed, null behind the last
    const ArrayField* mArray = nullptr;  // that it belongs to
    size_t mElement = 0;
    uint8_t mBlock[zk::kFrameRecordSize] = {};
};

}  // namespace vdrdump
