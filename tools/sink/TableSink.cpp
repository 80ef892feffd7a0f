#include "tools/sink/TableSink.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tools/record/ColumnText.h"
#include "tools/sink/ShowSink.h"

namespace vdrdump {
namespace {

std::string titleOf(const Column& column, const std::string& name) {
    return column.unit[0] == '\0' ? name : name + " " + column.unit;
}

std::string spaces(size_t width, const std::string& text) {
    return std::string(width > text.size() ? width - text.size() : 0, ' ');
}

}  // namespace

TableSink::TableSink(const FieldChoice& fields) : mOutput("-") {
    mSources.push_back({titleOf(kItems[0].column, "frame"), {"frame", &kItems[0].column}});
    for (ChosenValue& value : chosenValues(fields)) {
        mSources.push_back({titleOf(*value.column, value.name), std::move(value)});
    }
}

void TableSink::add(const Record& record) {
    ++mFound;
    if (record.session != mSession && mSession != 0) {
        addLine({});
        for (Source& source : mSources) {
            source.hasBefore = false;
        }
    }
    mSession = record.session;
    Line line;
    for (Source& source : mSources) {
        line.push_back(cellOf(source, record));
    }
    addLine(std::move(line));
}

TableSink::Cell TableSink::cellOf(Source& source, const Record& record) const {
    const uint8_t* const at = source.value.in(record);
    if (at == nullptr) {
        source.hasBefore = false;
        return {"-", ""};
    }
    return {shownValue(*source.value.column, at), differenceOf(source, at)};
}

// Of names and ids there is no difference, and of the frame number only one that is not 1.
std::string TableSink::differenceOf(Source& source, const uint8_t* at) const {
    const Column& column = *source.value.column;
    if (column.kind == Kind::Text || column.isId) {
        return "";
    }
    const bool hadBefore = source.hasBefore;
    source.hasBefore = true;
    char text[64] = "";
    if (column.kind == Kind::F32) {
        const double value = printedFloat(at);
        const double difference = value - source.floatBefore;
        source.floatBefore = value;
        if (hadBefore && difference != 0 && std::isfinite(difference)) {
            std::snprintf(text, sizeof(text), "%+.6f", difference);
        }
        return text;
    }
    // Unsigned, 64 bits wrap; their difference as a signed number is right all the same.
    const auto value = static_cast<uint64_t>(column.kind == Kind::U64 ? valueAt<int64_t>(at)
                                                                      : integerAt(column.kind, at));
    const auto difference = static_cast<int64_t>(value - static_cast<uint64_t>(source.before));
    source.before = static_cast<int64_t>(value);
    const bool isFrame = source.value.array == nullptr && column.offset == 0;
    if (hadBefore && difference != (isFrame ? 1 : 0)) {
        std::snprintf(text, sizeof(text), "%+lld", static_cast<long long>(difference));
    }
    return text;
}

void TableSink::addLine(Line line) {
    if (mIsMeasured) {
        print(line);
        return;
    }
    mMeasured.push_back(std::move(line));
    if (mMeasured.size() == kMeasured) {
        measure();
    }
}

void TableSink::measure() {
    mIsMeasured = true;
    mValueWidths.assign(mSources.size(), 0);
    mDifferenceWidths.assign(mSources.size(), 0);
    for (const Line& line : mMeasured) {
        for (size_t i = 0; i < line.size(); ++i) {
            mValueWidths[i] = std::max(mValueWidths[i], line[i].value.size());
            mDifferenceWidths[i] = std::max(mDifferenceWidths[i], line[i].difference.size());
        }
    }
    Line header;
    for (size_t i = 0; i < mSources.size(); ++i) {
        header.push_back({mSources[i].title, ""});
        mValueWidths[i] = std::max(mValueWidths[i], mSources[i].title.size());
    }
    if (mFound != 0) {
        print(header);
    }
    for (const Line& line : mMeasured) {
        print(line);
    }
    mMeasured.clear();
}

void TableSink::print(const Line& line) {
    std::string text;
    for (size_t i = 0; i < line.size(); ++i) {
        const Cell& cell = line[i];
        text += (i == 0 ? "" : "  ") + spaces(mValueWidths[i], cell.value) + cell.value;
        if (mDifferenceWidths[i] != 0) {
            text += " " + cell.difference + spaces(mDifferenceWidths[i], cell.difference);
        }
    }
    text.resize(text.find_last_not_of(' ') + 1);
    mOutput.append(text + "\n");
}

bool TableSink::finish() {
    if (!mIsMeasured) {
        measure();
    }
    const bool isWritten = mOutput.finish();
    if (mFound == 0 && mHadRecords) {
        reportNothingFound(mPath);
    }
    return isWritten && mFound != 0;
}

}  // namespace vdrdump
