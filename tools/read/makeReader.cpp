#include "tools/read/makeReader.h"

#include <algorithm>

#include "records/frameData.h"
#include "tools/read/BinaryReader.h"
#include "tools/read/TextReader.h"

namespace vdrdump {

std::unique_ptr<DumpReader> makeReader(ByteWindow& window, DamageLog& damage, DumpKind& kind) {
    const size_t size = std::min(window.ensure(zk::kFrameRecordSize), zk::kFrameRecordSize);
    kind = detectDumpKind(window.data(), size);
    switch (kind) {
        case DumpKind::Binary:
            return std::make_unique<BinaryReader>(window, damage);
        case DumpKind::Text:
            return std::make_unique<TextReader>(window, damage);
        case DumpKind::Empty:
            break;
    }
    return nullptr;
}

}  // namespace vdrdump
