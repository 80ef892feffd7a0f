#include "tools/sink/NdjsonSink.h"

#include <json/json.h>

#include <cmath>

#include "tools/schema/TableColumn.h"
#include "tools/sink/RowText.h"

namespace vdrdump {
namespace {

constexpr uint64_t kLargestExactDouble = (uint64_t{1} << 53) - 1;

// What appendName() gives is printable ASCII, of which a quote and a backslash need an escape.
char* appendString(char* out, const uint8_t* at, size_t width) {
    char name[256];
    const char* const end = appendName(name, at, width);
    *out++ = '"';
    for (const char* each = name; each != end; ++each) {
        if (*each == '"' || *each == '\\') {
            *out++ = '\\';
        }
        *out++ = *each;
    }
    *out++ = '"';
    return out;
}

struct JsonStyle {
    static char* key(char* out, std::string_view name) {
        *out = '"';
        out = appendText(out + 1, name);
        return appendText(out, "\":");
    }
    static char* nothing(char* out) { return appendText(out, "null"); }
    static char* emptyArray(char* out) { return appendText(out, "[]"); }
    static char* openArray(char* out) { return appendText(out, "["); }
    static char* closeArray(char* out) { return appendText(out, "]"); }
    static char* openElement(char* out) { return appendText(out, "{"); }
    static char* closeElement(char* out) { return appendText(out, "}"); }
    static char* elementKey(char* out, std::string_view name) { return key(out, name); }

    template <Kind kKind>
    static char* value(char* out, const Column& column, const uint8_t* at) {
        if constexpr (kKind == Kind::Text) {
            return appendString(out, at, column.size);
        } else if constexpr (kKind == Kind::F32) {
            return std::isfinite(valueAt<float>(at)) ? appendFloat(out, at) : nothing(out);
        } else if constexpr (kKind == Kind::U64) {
            const auto number = valueAt<uint64_t>(at);
            if (number > kLargestExactDouble) {
                *out = '"';
                return appendText(zk::formatUnsigned(out + 1, number), "\"");
            }
            return zk::formatUnsigned(out, number);
        } else {
            return appendNumber<kKind>(out, at);
        }
    }

    template <Kind kKind>
    static char* elementValue(char* out, const Column& column, const uint8_t* at) {
        return value<kKind>(out, column, at);
    }
};

}  // namespace

void NdjsonSink::beginFile(const DumpFile& file) {
    const auto key = [](const TableColumn& column) {
        return "\"" + std::string(column.name) + "\":";
    };
    mRowStart = "{" + key(kFileKey) + Json::valueToQuotedString(file.path.c_str()) + "," +
                key(kLostFrameKey) + (file.lostFrame ? std::to_string(*file.lostFrame) : "null") +
                "," + key(kSessionKey);
}

void NdjsonSink::add(const Record& record) {
    constexpr size_t kKeys = 2 * kLongestNumber + 16;  // session and record
    constexpr size_t kLongest = kKeys + RowText<JsonStyle>::longest();
    char* out = mOutput.reserve(mRowStart.size() + kLongest);
    out = appendText(out, mRowStart);
    out = zk::formatUnsigned(out, record.session);
    *out++ = ',';
    out = JsonStyle::key(out, kRecordKey.name);
    out = zk::formatUnsigned(out, record.index);
    *out++ = ',';
    out = RowText<JsonStyle>::append(out, record, mFields);
    out = appendText(out - 1, "}\n");
    mOutput.commit(out);
}

}  // namespace vdrdump
