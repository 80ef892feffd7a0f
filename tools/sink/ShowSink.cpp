#include "tools/sink/ShowSink.h"

#include <algorithm>
#include <cstdio>
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

}  // namespace

void ShowSink::add(const Record& record) {
    ++mFound;
    mOutput.append("frame " + std::to_string(record.frame()) +
                   (record.isMisnumbered ? " (damaged)" : "") + ": session " +
                   std::to_string(record.session) + ", record " + std::to_string(record.index) +
                   ", offset " + std::to_string(record.offset) + "\n");
    for (size_t i = 1; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (!mFields.wants(i)) {
            continue;
        }
        if (item.array != nullptr) {
            showArray(*item.array, record);
        } else {
            showColumn(item.column, record);
        }
    }
    mOutput.append("\n");
}

void ShowSink::showColumn(const Column& column, const Record& record) {
    const uint8_t* at = record.bytes + column.offset;
    mOutput.append("  " + padded(column.name) +
                   (record.knows(column) ? shownValue(column, at) + meaning(column, at)
                                         : std::string("not in the damaged record")) +
                   "\n");
}

void ShowSink::showArray(const ArrayField& array, const Record& record) {
    const size_t count = record.elements(array);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t columns = mFields.columnsOf(array, i);
        if (columns == 0) {
            continue;
        }
        const uint8_t* at = record.bytes + array.offset + i * array.elementSize;
        std::string text = "  " + padded(std::string(array.name) + "[" + std::to_string(i) + "]");
        const char* separator = "";
        if (const std::string name = nameOf(array, at); !name.empty()) {
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
        mOutput.append(text + "\n");
    }
}

// Of a node that the user has named; empty of any other element.
std::string ShowSink::nameOf(const ArrayField& array, const uint8_t* element) const {
    if (&array != &kNodes) {
        return "";
    }
    const auto node = valueAt<vdr2::NodeInfo>(element);
    return mNames.find({node.ids[0], node.ids[1], node.ids[2]});
}

bool ShowSink::finish() {
    const bool isWritten = mOutput.finish();
    if (mFound == 0 && mHadRecords) {
        reportNothingFound(mPath);
    }
    return isWritten && mFound != 0;
}

void reportNothingFound(const std::string& path) {
    std::fprintf(stderr, "vdrdump: %s: expected records of the frames asked for, found none\n",
                 path.c_str());
}

}  // namespace vdrdump
