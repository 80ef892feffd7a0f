#include "tools/sink/ShowSink.h"

#include <algorithm>
#include <cstdio>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

constexpr size_t kNameWidth = 34;

bool isNamed(const Item& item, const std::string& name) {
    return name == item.column.field || name == item.column.name;
}

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string valueText(const Column& column, const uint8_t* at) {
    char text[kLongestNumber];
    switch (column.kind) {
        case Kind::Text:
            return "\"" + nameAt(column, at) + "\"";
        case Kind::F32:
            return {text, appendFloat(text, at)};
        case Kind::U64:
            return std::to_string(valueAt<uint64_t>(at));
        default:
            return std::to_string(integerAt(column.kind, at));
    }
}

// What a number stands for, where that is the recorder's own doing.
std::string meaning(const Column& column, const uint8_t* at) {
    if (column.offset == offsetof(Layout, videoAction)) {
        return *at == 1 ? " (a recording starts)" : *at == 2 ? " (a recording has ended)" : "";
    }
    return column.unit[0] != '\0' ? std::string(" ") + column.unit : "";
}

}  // namespace

std::string ShowSink::unknownField(const std::vector<std::string>& fields) {
    for (const std::string& name : fields) {
        if (std::none_of(std::begin(kItems), std::end(kItems),
                         [&name](const Item& item) { return isNamed(item, name); })) {
            return name;
        }
    }
    return "";
}

ShowSink::ShowSink(const Choice& choice) : mChoice(choice), mOutput("-") {
    if (choice.fields.empty()) {
        mShown.set();
    }
    for (const std::string& name : choice.fields) {
        for (size_t i = 0; i < std::size(kItems); ++i) {
            mShown[i] = mShown[i] || isNamed(kItems[i], name);
        }
    }
}

void ShowSink::add(const Record& record) {
    const auto frame = record.read<uint32_t>(offsetof(Layout, frameNumber));
    if (frame < mChoice.frames.first || frame > mChoice.frames.last ||
        (mChoice.session != 0 && mChoice.session != record.session)) {
        return;
    }
    ++mFound;
    mOutput.append("frame " + std::to_string(frame) + ": session " +
                   std::to_string(record.session) + ", record " + std::to_string(record.index) +
                   ", offset " + std::to_string(record.offset) + "\n");
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (!mShown[i]) {
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
    mOutput.append("  " + padded(column.name, kNameWidth) +
                   (record.knows(column) ? valueText(column, at) + meaning(column, at)
                                         : std::string("not in the damaged record")) +
                   "\n");
}

void ShowSink::showArray(const ArrayField& array, const Record& record) {
    const size_t count = record.elements(array);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* at = record.bytes + array.offset + i * array.elementSize;
        std::string text =
                "  " + padded(std::string(array.name) + "[" + std::to_string(i) + "]", kNameWidth);
        const char* separator = "";
        for (const Column& column : array) {
            text += separator + std::string(column.name) + " " +
                    valueText(column, at + column.offset);
            separator = ", ";
        }
        mOutput.append(text + "\n");
    }
}

bool ShowSink::finish() {
    const bool isWritten = mOutput.flush();
    if (mFound == 0 && !mPath.empty()) {
        std::fprintf(stderr, "vdrdump: %s: expected records of the frames asked for, found none\n",
                     mPath.c_str());
    }
    return isWritten && mFound != 0;
}

}  // namespace vdrdump
