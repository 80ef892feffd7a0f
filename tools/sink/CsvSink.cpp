#include "tools/sink/CsvSink.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

constexpr size_t kLongestByte = 2 * kLongestEscape;  // of a name, escaped for JSON and for csv

constexpr size_t kWidestName = 64;  // characters of a text column in an array

constexpr size_t longest(const Column& column) {
    return column.kind == Kind::Text ? column.size * kLongestByte + 6 : kLongestNumber + 1;
}

constexpr size_t longestRow() {
    size_t size = 2 * kLongestNumber;  // session and record
    for (const Item& item : kItems) {
        if (item.array == nullptr) {
            size += longest(item.column);
            continue;
        }
        size_t element = 3;
        for (size_t i = 0; i < item.array->columnCount; ++i) {
            element += longest(item.array->columns[i]);
        }
        size += element * item.array->capacity + 8;
    }
    return size;
}

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

char* appendNameCell(char* out, const uint8_t* at, size_t width) {
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
    const auto append = [&out](const char* text, size_t size) {
        std::memcpy(out, text, size);
        out += size;
    };
    append("\"\"", 2);
    for (const char* each = name; each != end; ++each) {
        if (*each == '"') {
            append("\\\"\"", 3);
        } else if (*each == '\\') {
            append("\\\\", 2);
        } else {
            *out++ = *each;
        }
    }
    append("\"\"", 2);
    return out;
}

// JSON has no nan and no inf: they are strings.
char* appendJsonFloat(char* out, const uint8_t* at) {
    if (std::isfinite(valueAt<float>(at))) {
        return appendFloat(out, at);
    }
    *out++ = '"';
    *out++ = '"';
    out = appendFloat(out, at);
    *out++ = '"';
    *out++ = '"';
    return out;
}

template <const ArrayField& kArray, size_t... kColumn>
char* appendElement(char* out, const uint8_t* at, std::index_sequence<kColumn...>) {
    const auto column = [&out, at](auto index) {
        constexpr Column kThis = kArray.columns[decltype(index)::value];
        if constexpr (kThis.kind == Kind::Text) {
            static_assert(kThis.size <= kWidestName);
            out = appendJsonName(out, at + kThis.offset, kThis.size);
        } else if constexpr (kThis.kind == Kind::F32) {
            out = appendJsonFloat(out, at + kThis.offset);
        } else {
            out = appendNumber<kThis.kind>(out, at + kThis.offset);
        }
        *out++ = ',';
    };
    *out++ = '[';
    (column(std::integral_constant<size_t, kColumn>()), ...);
    out[-1] = ']';
    return out;
}

template <const ArrayField& kArray>
char* appendArray(char* out, const Record& record) {
    const size_t count = record.elements(kArray);
    if (count == 0) {
        *out++ = '[';
        *out++ = ']';
        return out;
    }
    const uint8_t* at = record.bytes + kArray.offset;
    *out++ = '"';
    *out++ = '[';
    for (size_t i = 0; i < count; ++i, at += kArray.elementSize) {
        out = appendElement<kArray>(out, at, std::make_index_sequence<kArray.columnCount>());
        *out++ = ',';
    }
    out[-1] = ']';
    *out++ = '"';
    return out;
}

// Which cell is written how is settled at compile time: a row is straight-line code.
template <bool kIsWhole, size_t kIndex>
char* appendCell(char* out, const Record& record) {
    constexpr Item kItem = kItems[kIndex];
    if constexpr (kItem.array != nullptr) {
        if (kIsWhole || record.known > kItem.array->countOffset) {
            out = appendArray<*kItem.array>(out, record);
        }
    } else if (kIsWhole || record.knows(kItem.column)) {
        const uint8_t* at = record.bytes + kItem.column.offset;
        if constexpr (kItem.column.kind == Kind::Text) {
            out = appendNameCell(out, at, kItem.column.size);
        } else {
            out = appendNumber<kItem.column.kind>(out, at);
        }
    }
    *out = ',';
    return out + 1;
}

template <bool kIsWhole, size_t... kIndex>
char* appendCells(char* out, const Record& record, std::index_sequence<kIndex...>) {
    ((out = appendCell<kIsWhole, kIndex>(out, record)), ...);
    return out;
}

}  // namespace

CsvSink::CsvSink(const std::string& path) : mOutput(path) {
    writeHeader();
}

void CsvSink::writeHeader() {
    std::string header = "file,lostFrame,session,record";
    for (const Item& item : kItems) {
        header += std::string(",") + item.column.name;
    }
    mOutput.append(header + "\n");
}

void CsvSink::beginFile(const DumpFile& file) {
    mRowStart = quoted(file.path) + ",";
    mRowStart += file.lostFrame ? std::to_string(*file.lostFrame) + "," : ",";
}

void CsvSink::add(const Record& record) {
    constexpr auto kEach = std::make_index_sequence<std::size(kItems)>();
    char* out = mOutput.reserve(mRowStart.size() + longestRow());
    std::memcpy(out, mRowStart.data(), mRowStart.size());
    out = zk::formatUnsigned(out + mRowStart.size(), record.session);
    *out++ = ',';
    out = zk::formatUnsigned(out, record.index);
    *out++ = ',';
    out = record.known == sizeof(Layout) ? appendCells<true>(out, record, kEach)
                                         : appendCells<false>(out, record, kEach);
    out[-1] = '\n';
    mOutput.commit(out);
}

}  // namespace vdrdump
