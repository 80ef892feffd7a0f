#include "tools/sink/NdjsonSink.h"

#include <cmath>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

constexpr uint64_t kLargestExactDouble = (uint64_t{1} << 53) - 1;

Json::Value valueOf(const Column& column, const uint8_t* at) {
    switch (column.kind) {
        case Kind::Text:
            return nameAt(column, at);
        case Kind::F32: {
            const auto value = valueAt<float>(at);
            return std::isfinite(value) ? Json::Value(static_cast<double>(value)) : Json::Value();
        }
        case Kind::U64: {
            const auto value = valueAt<uint64_t>(at);
            return value <= kLargestExactDouble ? Json::Value(Json::UInt64{value})
                                                : Json::Value(std::to_string(value));
        }
        default:
            return Json::Int64{integerAt(column.kind, at)};
    }
}

Json::Value arrayOf(const ArrayField& array, const Record& record) {
    Json::Value result(Json::arrayValue);
    const size_t count = record.elements(array);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* at = record.bytes + array.offset + i * array.elementSize;
        Json::Value& element = result.append(Json::objectValue);
        for (const Column& column : array) {
            element[Json::StaticString(column.name)] = valueOf(column, at + column.offset);
        }
    }
    return result;
}

Json::Value valueOf(const Item& item, const Record& record) {
    if (item.array != nullptr) {
        return record.known > item.array->countOffset ? arrayOf(*item.array, record)
                                                      : Json::Value();
    }
    return record.knows(item.column) ? valueOf(item.column, record.bytes + item.column.offset)
                                     : Json::Value();
}

}  // namespace

NdjsonSink::NdjsonSink(const std::string& path) : mOutput(path) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["precision"] = 6;  // as in a text line
    builder["precisionType"] = "decimal";
    mWriter.reset(builder.newStreamWriter());
}

void NdjsonSink::beginFile(const DumpFile& file) {
    mFile = file.path;
    mLostFrame = file.lostFrame ? Json::Value(Json::UInt{*file.lostFrame}) : Json::Value();
}

void NdjsonSink::add(const Record& record) {
    Json::Value frame(Json::objectValue);
    frame["file"] = mFile;
    frame["lostFrame"] = mLostFrame;
    frame["session"] = Json::UInt{record.session};
    frame["record"] = Json::UInt64{record.index};
    for (const Item& item : kItems) {
        frame[Json::StaticString(item.column.name)] = valueOf(item, record);
    }
    mText.str("");
    mWriter->write(frame, &mText);
    mText << '\n';
    mOutput.append(mText.str());
}

}  // namespace vdrdump
