#include "tools/read/TextLineParser.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace vdrdump {
namespace {

// A number in the range of `T` that fills the column to its end.
template <typename T>
bool storeNumber(const char* begin, const char* end, uint8_t* to) {
    T value{};
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || stop != end) {
        return false;
    }
    std::memcpy(to, &value, sizeof(value));
    return true;
}

const char* describe(Kind kind) {
    switch (kind) {
        case Kind::U8:
            return "a number up to 255";
        case Kind::U16:
            return "a number up to 65535";
        case Kind::I32:
        case Kind::U32:
            return "a number up to 4294967295";
        case Kind::U64:
            return "a number of at most 64 bits";
        case Kind::I16:
            return "a number from -32768 to 32767";
        case Kind::F32:
            return "a decimal number";
        case Kind::Text:
            return "text that fits its field";
    }
    return "";
}

}  // namespace

bool TextLineParser::parse(const char* begin, const char* end) {
    std::memset(mBlock, 0, sizeof(mBlock));
    mAt = begin;
    mEnd = end;
    mKnown = 0;
    for (const Item& item : kItems) {
        mArray = item.array;
        if (mArray != nullptr ? !array(*mArray)
                              : !column(item.column, mBlock + item.column.offset)) {
            return false;
        }
        mKnown = mArray != nullptr ? mArray->offset + size_t{mArray->elementSize} * mArray->capacity
                                   : size_t{item.column.offset} + item.column.size;
    }
    mColumn = nullptr;
    return mAt == mEnd;
}

bool TextLineParser::array(const ArrayField& array) {
    const size_t count = mBlock[array.countOffset];
    uint8_t beyond[64];  // the line shows what a count claims, also behind the array's end
    for (mElement = 0; mElement < count; ++mElement) {
        const bool held = mElement < array.capacity;
        const size_t at = array.offset + mElement * array.elementSize;
        for (const Column& each : array) {
            if (!column(each, held ? mBlock + at + each.offset : beyond)) {
                return false;
            }
        }
        if (held) {
            mKnown = at + array.elementSize;
        }
    }
    return true;
}

bool TextLineParser::column(const Column& column, uint8_t* to) {
    mColumn = &column;
    const auto* comma =
            static_cast<const char*>(std::memchr(mAt, ',', static_cast<size_t>(mEnd - mAt)));
    if (comma == nullptr || !store(column, mAt, comma, to)) {
        return false;
    }
    mAt = comma + 1;
    return true;
}

bool TextLineParser::store(const Column& column, const char* begin, const char* end, uint8_t* to) {
    switch (column.kind) {
        case Kind::U8:
            return storeNumber<uint8_t>(begin, end, to);
        case Kind::U16:
            return storeNumber<uint16_t>(begin, end, to);
        case Kind::I32:  // the line prints every 32-bit column without a sign
        case Kind::U32:
            return storeNumber<uint32_t>(begin, end, to);
        case Kind::U64:
            return storeNumber<uint64_t>(begin, end, to);
        case Kind::I16:
            return storeNumber<int16_t>(begin, end, to);
        case Kind::F32:
            return storeNumber<float>(begin, end, to);
        case Kind::Text:
            break;
    }
    const auto length = static_cast<size_t>(end - begin);
    std::memcpy(to, begin, std::min(length, size_t{column.size}));
    return length <= column.size;
}

std::string TextLineParser::expected() const {
    if (mColumn == nullptr) {
        return "the end of the line";
    }
    std::string name = mColumn->name;
    if (mArray != nullptr) {
        name = std::string(mArray->name) + "[" + std::to_string(mElement) + "]." + name;
    }
    return std::string(describe(mColumn->kind)) + " and a comma for " + name;
}

}  // namespace vdrdump
