#include "tools/sink/recordText.h"

#include <algorithm>
#include <string_view>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

// Of the longest name there is, so that none runs into its value.
constexpr size_t nameWidth() {
    size_t width = 0;
    for (const Item& item : kItems) {
        const size_t index = item.array != nullptr ? sizeof("[10]") - 1 : 0;
        width = std::max(width, std::string_view(item.column.name).size() + index);
    }
    return width + 2;
}

std::string padded(std::string text) {
    text.resize(nameWidth(), ' ');
    return text;
}

// What a number stands for, where that is the recorder's own doing.
std::string meaning(const Column& column, const uint8_t* at) {
    if (column.offset == offsetof(Layout, videoAction)) {
        return *at == 1 ? " (a recording starts)" : *at == 2 ? " (a recording has ended)" : "";
    }
    return column.unit[0] != '\0' ? std::string(" ") + column.unit : "";
}

std::string columnLine(const Column& column, const Record& record) {
    const uint8_t* at = record.bytes + column.offset;
    return "  " + padded(column.name) +
           (record.knows(column) ? shownValue(column, at) + meaning(column, at)
                                 : std::string("not in the damaged record")) +
           "\n";
}

// Of a node that the user has named; empty of any other element.
std::string nameOf(const ArrayField& array, const uint8_t* element, const NodeNames& names) {
    if (&array != &kNodes) {
        return "";
    }
    const auto node = valueAt<vdr2::NodeInfo>(element);
    return names.find({node.ids[0], node.ids[1], node.ids[2]});
}

std::string arrayLines(const ArrayField& array, const Record& record, const FieldChoice& fields,
                       const NodeNames& names) {
    std::string text;
    const size_t count = record.elements(array);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t columns = fields.columnsOf(array, i);
        if (columns == 0) {
            continue;
        }
        const uint8_t* at = record.bytes + array.offset + i * array.elementSize;
        text += "  " + padded(std::string(array.name) + "[" + std::to_string(i) + "]");
        const char* separator = "";
        if (const std::string name = nameOf(array, at, names); !name.empty()) {
            text += name;
            separator = ", ";
        }
        for (size_t column = 0; column < array.columnCount; ++column) {
            const Column& each = array.columns[column];
            if ((columns >> column & 1) != 0) {
                text += separator + std::string(each.name) + " " +
                        shownValue(each, at + each.offset);
                separator = ", ";
            }
        }
        text += "\n";
    }
    return text;
}

bool isZero(const Column& column, const Record& record) {
    const uint8_t* const at = record.bytes + column.offset;
    return record.knows(column) &&
           std::all_of(at, at + column.size, [](uint8_t byte) { return byte == 0; });
}

}  // namespace

std::string recordText(const Record& record, const FieldChoice& fields, const NodeNames& names) {
    std::string text;
    for (size_t i = 1; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (fields.wants(i)) {
            text += item.array != nullptr ? arrayLines(*item.array, record, fields, names)
                                          : columnLine(item.column, record);
        }
    }
    return text;
}

std::string knownText(const Record& record, const NodeNames& names) {
    const FieldChoice all;
    std::string text;
    for (size_t i = 1; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (item.array != nullptr) {
            text += arrayLines(*item.array, record, all, names);
        } else if (!isZero(item.column, record)) {
            text += columnLine(item.column, record);
        }
    }
    return text;
}

}  // namespace vdrdump
