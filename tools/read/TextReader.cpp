#include "tools/read/TextReader.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "tools/read/checkCounts.h"

namespace vdrdump {
namespace {

constexpr size_t kLongestLine = zk::kFrameRecordSize - 1;  // with its newline

const char* endOfText(const char* line, const char* newline) {
    while (newline != line && newline[-1] == '\r') {
        --newline;
    }
    return newline;
}

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
        const bool isWhole =
                mParser.parse(line, isCut ? line + available : endOfText(line, newline));
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

// Of each line the number in front of the first comma.
NumbersAhead TextReader::ahead() {
    NumbersAhead ahead;
    const size_t available = mWindow.ensure(NumbersAhead::kMost * kLongestLine);
    const auto* line = reinterpret_cast<const char*>(mWindow.data());
    const char* const end = line + available;
    while (line != end && !ahead.isFull()) {
        const auto length = std::min(static_cast<size_t>(end - line), kLongestLine);
        const auto* newline = static_cast<const char*>(std::memchr(line, '\n', length));
        uint32_t number = 0;
        const auto [stop, error] = std::from_chars(line, line + length, number);
        if (error == std::errc() && stop != end && *stop == ',') {
            ahead.add(number);
        }
        line = newline != nullptr ? newline + 1 : line + length;
    }
    return ahead;
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
