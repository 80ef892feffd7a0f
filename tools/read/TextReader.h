#pragma once

#include "tools/read/ByteWindow.h"
#include "tools/read/DamageLog.h"
#include "tools/read/DumpReader.h"
#include "tools/read/TextLineParser.h"

namespace vdrdump {

// Reads frame-loss text files: a line per record. The writer cuts a line at 4095 characters and
// goes on with the next record right behind, so a line that is longer than that is two. Carriage
// returns at a line's end belong to the way that the file took, not to the line.
class TextReader : public DumpReader {
public:
    // Both must outlive this.
    TextReader(ByteWindow& window, DamageLog& damage);

    bool next(Record& record) override;
    NumbersAhead ahead() override;

private:
    void reportFault(const Record& record, const char* line, bool isCut);

    ByteWindow& mWindow;
    DamageLog& mDamage;
    TextLineParser mParser;
    uint64_t mIndex = 0;
};

}  // namespace vdrdump
