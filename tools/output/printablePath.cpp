#include "tools/output/printablePath.h"

#include <cstddef>
#include <cstdint>

namespace vdrdump {
namespace {

uint32_t byteAt(const std::string& text, size_t at) {
    return at < text.size() ? static_cast<uint8_t>(text[at]) : 0;
}

// Bytes of the UTF-8 character at `at`, 0 where there is none: the shortest form of a character
// that exists and controls nothing.
size_t characterAt(const std::string& text, size_t at) {
    const uint32_t first = byteAt(text, at);
    if (first < 0x80) {
        return first >= ' ' && first != 0x7f ? 1 : 0;
    }
    const size_t size = first >> 5 == 6 ? 2 : first >> 4 == 14 ? 3 : first >> 3 == 30 ? 4 : 0;
    uint32_t character = first & (0x7fU >> size);
    for (size_t i = 1; i < size; ++i) {
        const uint32_t next = byteAt(text, at + i);
        if (next >> 6 != 2) {
            return 0;
        }
        character = character << 6 | (next & 0x3f);
    }
    constexpr uint32_t kLowest[] = {0, 0, 0xa0, 0x800, 0x10000};  // below 0xa0 they are controls
    const bool isSurrogate = character >= 0xd800 && character < 0xe000;
    const bool isLineEnd = character == 0x2028 || character == 0x2029;
    return character >= kLowest[size] && character <= 0x10ffff && !isSurrogate && !isLineEnd ? size
                                                                                             : 0;
}

}  // namespace

std::string printablePath(const std::string& path) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t at = 0; at < path.size();) {
        const size_t size = path[at] == '\\' ? 0 : characterAt(path, at);
        if (size != 0) {
            text.append(path, at, size);
            at += size;
            continue;
        }
        const uint32_t byte = byteAt(path, at++);
        text += "\\x";
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace vdrdump
