#pragma once

#include <cstddef>
#include <cstdint>

namespace vdrdump {

enum class DumpKind : uint8_t { Empty, Binary, Text, None };

const char* nameOf(DumpKind kind);

// Tells a dump from its first bytes, the more of them the better; None for what is no dump.
// `isEnd`: there are no more. Names are no help: dumps get renamed, and standard input has none.
DumpKind detectDumpKind(const uint8_t* bytes, size_t size, bool isEnd);

}  // namespace vdrdump
