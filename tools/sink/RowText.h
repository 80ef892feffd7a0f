#pragma once

#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "tools/record/ColumnText.h"
#include "tools/record/FieldChoice.h"
#include "tools/record/Record.h"

// The row of one record as text, assembled from the layout table at compile time: which value is
// written how is settled then, and a row is straight-line code.
namespace vdrdump {

inline char* appendText(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// `Style` says how values, arrays and what the dump did not give are written. All calls write at
// `out` and return the end:
//
//   key(out, name)          in front of a value of the row
//   value<kKind>(out, column, at)
//   nothing(out)            in the place of a value that is not known
//   openArray(out), closeArray(out), emptyArray(out)
//   openElement(out), closeElement(out)
//   elementKey(out, name)   in front of a value of an element
//   elementValue<kKind>(out, column, at)
//
// Behind each value and each element stands a comma; the last one is written over.
template <typename Style>
class RowText {
public:
    // At most this many characters, the comma behind the last value included.
    static constexpr size_t longest() {
        size_t size = 0;
        for (const Item& item : kItems) {
            size += longest(item.column);
            for (size_t i = 0; item.array != nullptr && i < item.array->columnCount; ++i) {
                size += (longest(item.array->columns[i]) + kAround) * item.array->capacity;
            }
        }
        return size;
    }

    static char* append(char* out, const Record& record, const FieldChoice& choice) {
        constexpr auto kEach = std::make_index_sequence<std::size(kItems)>();
        return record.isWhole() ? appendAll<true>(out, record, choice, kEach)
                                : appendAll<false>(out, record, choice, kEach);
    }

private:
    static constexpr size_t kAround = 16;  // quotes, brackets, commas

    static constexpr size_t longest(const Column& column) {
        // Of a name each byte may need an escape, and that another.
        const size_t value = column.kind == Kind::Text ? size_t{column.size} * 2 * kLongestEscape
                                                       : kLongestNumber;
        return std::string_view(column.name).size() + value + kAround;
    }

    template <const ArrayField& kArray, size_t kColumn>
    static char* appendPart(char* out, const uint8_t* at, uint8_t columns) {
        constexpr Column kThis = kArray.columns[kColumn];
        if ((columns >> kColumn & 1) == 0) {
            return out;
        }
        out = Style::elementKey(out, kThis.name);
        out = Style::template elementValue<kThis.kind>(out, kThis, at + kThis.offset);
        *out = ',';
        return out + 1;
    }

    template <const ArrayField& kArray, size_t... kColumn>
    static char* appendElement(char* out, const uint8_t* at, uint8_t columns,
                               std::index_sequence<kColumn...>) {
        out = Style::openElement(out);
        ((out = appendPart<kArray, kColumn>(out, at, columns)), ...);
        out = Style::closeElement(out - 1);
        *out = ',';
        return out + 1;
    }

    template <const ArrayField& kArray>
    static char* appendArray(char* out, const Record& record, const FieldChoice& choice) {
        constexpr auto kEach = std::make_index_sequence<kArray.columnCount>();
        constexpr uint8_t kAll = FieldChoice::allColumns(kArray);
        const size_t count = record.elements(kArray);
        const uint8_t* at = record.bytes + kArray.offset;
        char* const begin = out;
        out = Style::openArray(out);
        char* const first = out;
        for (size_t i = 0; i < count; ++i, at += kArray.elementSize) {
            const uint8_t columns = choice.columnsOf(kArray, i);
            if (columns == kAll) {
                out = appendElement<kArray>(out, at, kAll, kEach);
            } else if (columns != 0) {
                out = appendElement<kArray>(out, at, columns, kEach);
            }
        }
        return out == first ? Style::emptyArray(begin) : Style::closeArray(out - 1);
    }

    template <bool kIsWhole, size_t kIndex>
    static char* appendItem(char* out, const Record& record, const FieldChoice& choice) {
        constexpr Item kItem = kItems[kIndex];
        if (!choice.wants(kIndex)) {
            return out;
        }
        out = Style::key(out, kItem.column.name);
        if constexpr (kItem.array != nullptr) {
            out = kIsWhole || record.known > kItem.array->countOffset
                          ? appendArray<*kItem.array>(out, record, choice)
                          : Style::nothing(out);
        } else {
            out = kIsWhole || record.knows(kItem.column)
                          ? Style::template value<kItem.column.kind>(
                                    out, kItem.column, record.bytes + kItem.column.offset)
                          : Style::nothing(out);
        }
        *out = ',';
        return out + 1;
    }

    template <bool kIsWhole, size_t... kIndex>
    static char* appendAll(char* out, const Record& record, const FieldChoice& choice,
                           std::index_sequence<kIndex...>) {
        ((out = appendItem<kIsWhole, kIndex>(out, record, choice)), ...);
        return out;
    }
};

}  // namespace vdrdump
