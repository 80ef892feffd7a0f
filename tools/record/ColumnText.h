#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "records/FloatText.h"
#include "records/IntegerText.h"
#include "tools/record/RecordSchema.h"

// Values as text, written where `out` points; each call returns the end. This is the hot path of
// the exports: no allocation, no stream, no locale.
namespace vdrdump {

inline constexpr size_t kLongestNumber = zk::kLongestFloatText + 1;
inline constexpr size_t kLongestEscape = 4;  // "\x1b"

inline char* appendFloat(char* out, const uint8_t* at) {
    uint32_t bits = 0;
    std::memcpy(&bits, at, sizeof(bits));
    if (bits == 0) {
        static constexpr std::string_view kZero = "0.000000";
        return std::copy(kZero.begin(), kZero.end(), out);
    }
    float value = 0;
    std::memcpy(&value, at, sizeof(value));
    return zk::formatFloat(out, value);
}

template <typename T>
T valueAt(const uint8_t* at) {
    T value{};
    std::memcpy(&value, at, sizeof(value));
    return value;
}

// A number as a text line prints it, except that what is signed at its source stays signed.
template <Kind kKind>
char* appendNumber(char* out, const uint8_t* at) {
    if constexpr (kKind == Kind::U8) {
        return zk::formatUnsigned(out, *at);
    } else if constexpr (kKind == Kind::U16) {
        return zk::formatUnsigned(out, valueAt<uint16_t>(at));
    } else if constexpr (kKind == Kind::U32) {
        return zk::formatUnsigned(out, valueAt<uint32_t>(at));
    } else if constexpr (kKind == Kind::U64) {
        return zk::formatUnsigned(out, valueAt<uint64_t>(at));
    } else if constexpr (kKind == Kind::I16) {
        return zk::formatSigned(out, valueAt<int16_t>(at));
    } else if constexpr (kKind == Kind::I32) {
        return zk::formatSigned(out, valueAt<int32_t>(at));
    } else {
        static_assert(kKind == Kind::F32);
        return appendFloat(out, at);
    }
}

// Integers of every kind but 64 bits fit.
inline int64_t integerAt(Kind kind, const uint8_t* at) {
    switch (kind) {
        case Kind::U8:
            return *at;
        case Kind::U16:
            return valueAt<uint16_t>(at);
        case Kind::U32:
            return valueAt<uint32_t>(at);
        case Kind::I16:
            return valueAt<int16_t>(at);
        case Kind::I32:
            return valueAt<int32_t>(at);
        default:
            return 0;
    }
}

// A character field up to its first NUL or its width. What is not printable ASCII, and a
// backslash, becomes "\xNN": whatever bytes a damaged dump holds, they reach no terminal, quote
// no field and break no encoding.
inline char* appendName(char* out, const uint8_t* at, size_t width) {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (size_t i = 0; i < width && at[i] != 0; ++i) {
        const uint8_t byte = at[i];
        if (byte >= ' ' && byte <= '~' && byte != '\\') {
            *out++ = static_cast<char>(byte);
        } else {
            *out++ = '\\';
            *out++ = 'x';
            *out++ = kDigits[byte >> 4];
            *out++ = kDigits[byte & 15];
        }
    }
    return out;
}

inline std::string nameAt(const Column& column, const uint8_t* at) {
    std::string name(column.size * kLongestEscape, '\0');
    name.resize(static_cast<size_t>(appendName(name.data(), at, column.size) - name.data()));
    return name;
}

// The number that is printed: six decimals, as in a text line, so that a frame has the same
// values whichever kind of dump it was read from.
inline double printedFloat(const uint8_t* at) {
    char text[kLongestNumber];
    const char* end = appendFloat(text, at);
    double value = 0;
    std::from_chars(text, end, value);
    return value;
}

// To count with, of a column that is no text: what has more than 53 bits is rounded.
inline double numberAt(const Column& column, const uint8_t* at) {
    return column.kind == Kind::F32   ? static_cast<double>(valueAt<float>(at))
           : column.kind == Kind::U64 ? static_cast<double>(valueAt<uint64_t>(at))
                                      : static_cast<double>(integerAt(column.kind, at));
}

// For a reader's eye: names in quotes, ids in hexadecimal.
inline std::string shownValue(const Column& column, const uint8_t* at) {
    char text[kLongestNumber];
    switch (column.kind) {
        case Kind::Text:
            return "\"" + nameAt(column, at) + "\"";
        case Kind::F32:
            return {text, appendFloat(text, at)};
        case Kind::U64:
            return std::to_string(valueAt<uint64_t>(at));
        default:
            break;
    }
    const int64_t value = integerAt(column.kind, at);
    if (column.isId) {
        const auto [end, error] = std::to_chars(text, text + sizeof(text), value, 16);
        return error == std::errc() ? "0x" + std::string(text, end) : "";
    }
    return std::to_string(value);
}

}  // namespace vdrdump
