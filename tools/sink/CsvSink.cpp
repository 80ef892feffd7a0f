#include "tools/sink/CsvSink.h"

#include <algorithm>
#include <cmath>

#include "tools/schema/TableColumn.h"
#include "tools/sink/RowText.h"

namespace vdrdump {
namespace {

constexpr size_t kWidestName = 64;  // characters of a text column in an array

std::string quoted(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string result = "\"";
    for (const char each : text) {
        result.append(each == '"' ? 2 : 1, each);
    }
    return result + "\"";
}

// An empty name is quoted: an empty cell is a value that is not known.
char* appendNameCell(char* out, const uint8_t* at, size_t width) {
    if (*at == 0) {
        return appendText(out, "\"\"");
    }
    char* const begin = out;
    out = appendName(out, at, width);
    const auto isSpecial = [](char each) { return each == ',' || each == '"'; };
    if (std::none_of(begin, out, isSpecial)) {
        return out;
    }
    const std::string cell = quoted(std::string(begin, out));
    return std::copy(cell.begin(), cell.end(), begin);
}

// A JSON string inside a quoted cell.
char* appendJsonName(char* out, const uint8_t* at, size_t width) {
    char name[kWidestName * kLongestEscape];
    const char* const end = appendName(name, at, width);
    out = appendText(out, "\"\"");
    for (const char* each = name; each != end; ++each) {
        if (*each == '"') {
            out = appendText(out, "\\\"\"");
        } else if (*each == '\\') {
            out = appendText(out, "\\\\");
        } else {
            *out++ = *each;
        }
    }
    return appendText(out, "\"\"");
}

// JSON has no nan and no inf: they are strings.
char* appendJsonFloat(char* out, const uint8_t* at) {
    if (std::isfinite(valueAt<float>(at))) {
        return appendFloat(out, at);
    }
    return appendText(appendFloat(appendText(out, "\"\""), at), "\"\"");
}

struct CsvStyle {
    static char* key(char* out, std::string_view) { return out; }
    static char* nothing(char* out) { return out; }
    static char* emptyArray(char* out) { return appendText(out, "[]"); }
    static char* openArray(char* out) { return appendText(out, "\"["); }
    static char* closeArray(char* out) { return appendText(out, "]\""); }
    static char* openElement(char* out) { return appendText(out, "["); }
    static char* closeElement(char* out) { return appendText(out, "]"); }
    static char* elementKey(char* out, std::string_view) { return out; }

    template <Kind kKind>
    static char* value(char* out, const Column& column, const uint8_t* at) {
        if constexpr (kKind == Kind::Text) {
            return appendNameCell(out, at, column.size);
        } else {
            return appendNumber<kKind>(out, at);
        }
    }

    template <Kind kKind>
    static char* elementValue(char* out, const Column& column, const uint8_t* at) {
        if constexpr (kKind == Kind::Text) {
            return appendJsonName(out, at, column.size);
        } else if constexpr (kKind == Kind::F32) {
            return appendJsonFloat(out, at);
        } else {
            return appendNumber<kKind>(out, at);
        }
    }
};

}  // namespace

CsvSink::CsvSink(const std::string& path, const FieldChoice& fields)
      : mFields(fields), mOutput(path) {
    writeHeader();
}

void CsvSink::writeHeader() {
    std::string header = listOf(kRowKeys, ",", [](const TableColumn& key) { return key.name; });
    for (size_t i = 0; i < std::size(kItems); ++i) {
        header += mFields.wants(i) ? std::string(",") + kItems[i].column.name : "";
    }
    mOutput.append(header + "\n");
}

void CsvSink::beginFile(const DumpFile& file) {
    mRowStart = quoted(file.path) + ",";
    mRowStart += file.lostFrame ? std::to_string(*file.lostFrame) + "," : ",";
}

void CsvSink::add(const Record& record) {
    constexpr size_t kKeys = 2 * kLongestNumber;  // session and record
    constexpr size_t kLongest = kKeys + RowText<CsvStyle>::longest();
    char* out = mOutput.reserve(mRowStart.size() + kLongest);
    out = appendText(out, mRowStart);
    out = zk::formatUnsigned(out, record.session);
    *out++ = ',';
    out = zk::formatUnsigned(out, record.index);
    *out++ = ',';
    out = RowText<CsvStyle>::append(out, record, mFields);
    out[-1] = '\n';
    mOutput.commit(out);
}

}  // namespace vdrdump
