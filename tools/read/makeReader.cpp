#include "tools/read/makeReader.h"

#include <cstring>

#include "tools/read/BinaryReader.h"
#include "tools/read/TextReader.h"

namespace vdrdump {
namespace {

constexpr size_t kFront = size_t{64} * 1024;
constexpr char kByteOrderMark[] = "\xef\xbb\xbf";

void skipByteOrderMark(ByteWindow& window) {
    constexpr size_t kSize = sizeof(kByteOrderMark) - 1;
    if (window.ensure(kSize) >= kSize && std::memcmp(window.data(), kByteOrderMark, kSize) == 0) {
        window.consume(kSize);
    }
}

}  // namespace

std::unique_ptr<DumpReader> makeReader(ByteWindow& window, DamageLog& damage, DumpKind& kind) {
    skipByteOrderMark(window);
    const size_t size = window.ensure(kFront);
    kind = detectDumpKind(window.data(), size, size < kFront);
    switch (kind) {
        case DumpKind::Binary:
            return std::make_unique<BinaryReader>(window, damage);
        case DumpKind::Text:
            return std::make_unique<TextReader>(window, damage);
        case DumpKind::Empty:
            break;
        case DumpKind::None:
            if (damage.add(Damage::NoDump)) {
                damage.describe(0, "a dump, found neither its records nor its lines");
            }
            break;
    }
    return nullptr;
}

}  // namespace vdrdump
