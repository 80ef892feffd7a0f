#pragma once

#include <iterator>
#include <string>
#include <vector>

#include "tools/record/RecordSchema.h"

// The columns of the table of frames that csv and ndjson are: what tells a row from others, then
// everything in a record.
namespace vdrdump {

struct TableColumn {
    const char* name;
    Kind kind;  // of a column that is no array
    const ArrayField* array = nullptr;
    bool isAlwaysKnown = false;
};

// In front of the record in each row: the path, the frame that the name of a frame-loss text tells
// of, the camera session in the file, and the place in the file.
inline constexpr TableColumn kFileKey{"file", Kind::Text, nullptr, true};
inline constexpr TableColumn kLostFrameKey{"lostFrame", Kind::U32};
inline constexpr TableColumn kSessionKey{"session", Kind::U32, nullptr, true};
inline constexpr TableColumn kRecordKey{"record", Kind::U64, nullptr, true};
inline constexpr TableColumn kRowKeys[] = {kFileKey, kLostFrameKey, kSessionKey, kRecordKey};

inline std::vector<TableColumn> tableColumns() {
    std::vector<TableColumn> columns(std::begin(kRowKeys), std::end(kRowKeys));
    for (const Item& item : kItems) {
        columns.push_back({item.column.name, item.column.kind, item.array});
    }
    return columns;
}

// What `describe` says of each, with `separator` between.
template <typename Range, typename Describe>
std::string listOf(const Range& range, const char* separator, Describe describe) {
    std::string list;
    for (const auto& each : range) {
        list += list.empty() ? "" : separator;
        list += describe(each);
    }
    return list;
}

// "name type" of each, as most engines have it.
template <typename Range, typename TypeOf>
std::string declarationsOf(const Range& range, const char* separator, TypeOf typeOf) {
    return listOf(range, separator,
                  [&](const auto& each) { return std::string(each.name) + " " + typeOf(each); });
}

}  // namespace vdrdump
