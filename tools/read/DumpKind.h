#pragma once

#include <cstddef>
#include <cstdint>

namespace vdrdump {

enum class DumpKind : uint8_t { Empty, Binary, Text };

// Tells a dump from its first bytes, at most a record's. Names are no help: dumps get renamed,
// and standard input has none.
DumpKind detectDumpKind(const uint8_t* bytes, size_t size);

}  // namespace vdrdump
