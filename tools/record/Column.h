#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// What the layout table is made of: one value of a record, an array of them, and how they are made
// from the members of the layout headers.
namespace vdrdump {

enum class Kind : uint8_t { U8, U16, U32, U64, I16, I32, F32, Text };

struct Column {
    const char* field;  // of the layout
    const char* name;   // stable: header of csv, keys of ndjson, columns of sqlite
    Kind kind;
    uint16_t offset;  // in the record; for a column of an array, in the element
    uint16_t size;
    const char* unit;     // "" where none is known
    const char* meaning;  // in words, for whoever asks what there is
    bool isId;            // shown in hexadecimal, as ids are written in code and logs
};

struct ArrayField {
    const char* name;
    uint16_t countOffset;
    uint16_t offset;
    uint16_t elementSize;
    uint16_t capacity;
    const Column* columns;
    uint16_t columnCount;

    const Column* begin() const { return columns; }
    const Column* end() const { return columns + columnCount; }
};

// In layout order: a column, or an array behind its count's column.
struct Item {
    Column column;
    const ArrayField* array;  // null for a column
};

template <typename T>
constexpr Kind kindOf() {
    using Scalar = std::remove_extent_t<T>;
    if constexpr (std::is_same_v<Scalar, char>) {
        return Kind::Text;
    } else if constexpr (std::is_same_v<Scalar, float>) {
        return Kind::F32;
    } else if constexpr (std::is_signed_v<Scalar>) {
        static_assert(sizeof(Scalar) == 2 || sizeof(Scalar) == 4);
        return sizeof(Scalar) == 2 ? Kind::I16 : Kind::I32;
    } else {
        static_assert(std::is_unsigned_v<Scalar>);
        return sizeof(Scalar) == 1   ? Kind::U8
               : sizeof(Scalar) == 2 ? Kind::U16
               : sizeof(Scalar) == 4 ? Kind::U32
                                     : Kind::U64;
    }
}

// Where a value lies and what it is.
struct Place {
    Kind kind;
    size_t offset;
    size_t size;
};

constexpr Column makeColumn(const char* field, const char* name, Place place, const char* unit,
                            const char* meaning, bool isId = false) {
    return {field,
            name,
            place.kind,
            static_cast<uint16_t>(place.offset),
            static_cast<uint16_t>(place.size),
            unit,
            meaning,
            isId};
}

constexpr Item makeItem(const char* field, const char* name, Place place, const char* unit,
                        const char* meaning) {
    return {makeColumn(field, name, place, unit, meaning), nullptr};
}

constexpr Item makeItem(const ArrayField& array, const char* meaning) {
    return {makeColumn(array.name, array.name, {Kind::U8, 0, 0}, "", meaning), &array};
}

template <size_t kColumns>
constexpr ArrayField makeArray(const char* name, size_t countOffset, size_t offset, size_t size,
                               size_t elementSize, const Column (&columns)[kColumns]) {
    return {name,
            static_cast<uint16_t>(countOffset),
            static_cast<uint16_t>(offset),
            static_cast<uint16_t>(elementSize),
            static_cast<uint16_t>(size / elementSize),
            columns,
            static_cast<uint16_t>(kColumns)};
}

}  // namespace vdrdump
