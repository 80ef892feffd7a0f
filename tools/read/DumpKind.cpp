#include "tools/read/DumpKind.h"

#include <cstring>

namespace vdrdump {
namespace {

// The columns up to the zoom ratio are numbers whatever the record holds.
bool startsWithNumbers(const uint8_t* bytes, size_t size) {
    constexpr int kNumbers = 7;
    int numbers = 0;
    for (size_t i = 0; i < size && numbers < kNumbers; ++i) {
        if (std::strchr("0123456789.,-naif", bytes[i]) == nullptr || bytes[i] == 0) {
            return false;
        }
        numbers += bytes[i] == ',' ? 1 : 0;
    }
    return true;
}

}  // namespace

DumpKind detectDumpKind(const uint8_t* bytes, size_t size) {
    if (size == 0) {
        return DumpKind::Empty;
    }
    // A text file that begins with damage still holds no NUL; a record is hardly ever without.
    const bool isText = startsWithNumbers(bytes, size) || std::memchr(bytes, 0, size) == nullptr;
    return isText ? DumpKind::Text : DumpKind::Binary;
}

}  // namespace vdrdump
