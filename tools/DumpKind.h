#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "tools/ByteWindow.h"
#include "tools/DamageLog.h"
#include "tools/DumpReader.h"

namespace vdrdump {

enum class DumpKind : uint8_t { Empty, Binary, Text };

// Tells a dump from its first bytes, at most a record's. Names are no help: dumps get renamed,
// and standard input has none.
DumpKind detectDumpKind(const uint8_t* bytes, size_t size);

// Looks at the front of `window` and makes the reader for it; none for an empty dump. Window and
// log must outlive the reader.
std::unique_ptr<DumpReader> makeReader(ByteWindow& window, DamageLog& damage, DumpKind& kind);

}  // namespace vdrdump
