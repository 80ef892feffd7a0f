#include "tools/read/TextReader.h"

#include <algorithm>
#include <cstring>

#include "tools/read/checkCounts.h"

namespace vdrdump {
namespace {

constexpr size_t kLongestLine = zk::kFrameRecordSize - 1;  // with its newline

}  // namespace

TextReader::TextReader(ByteWindow& window, DamageLog& damage) : mWindow(window), mDamage(damage) {}

bool TextReader::next(Record& record) {
    while (true) {
        const size_t available = std::min(mWindow.ensure(kLongestLine), kLongestLine);
        if (available == 0) {
            return false;
        }
        const auto* line = reinterpret_cast<const char*>(mWindow.data());
        const auto* newline = static_cast<const char*>(std::memchr(line, '\n', available));
        const bool isCut = newline == nullptr;
        const bool isWhole = mParser.parse(line, isCut ? line + available : newline);
        record.offset = mWindow.offset();
        record.index = mIndex++;
        record.bytes = mParser.block();
        record.known = mParser.known();
        if (isCut || !isWhole) {
            reportFault(record, line, isCut);
        }
        checkCounts(record, mDamage);
        mWindow.consume(isCut ? available : static_cast<size_t>(newline - line) + 1);
        if (record.known >= sizeof(Layout::frameNumber)) {
            return true;
        }
    }
}

void TextReader::reportFault(const Record& record, const char* line, bool isCut) {
    if (mDamage.add(isCut ? Damage::CutLine : Damage::BadLine)) {
        const bool isWhole = mParser.known() == sizeof(Layout);
        mDamage.describe(record.offset + static_cast<uint64_t>(mParser.stoppedAt() - line),
                         (isCut && isWhole ? std::string("a newline") : mParser.expected()) +
                                 (isCut ? ", found a line that is cut" : "") + " (line " +
                                 std::to_string(record.index + 1) + ")");
    }
}

}  // namespace vdrdump
