#pragma once

#include <memory>

#include "tools/read/ByteWindow.h"
#include "tools/read/DamageLog.h"
#include "tools/read/DumpKind.h"
#include "tools/read/DumpReader.h"

namespace vdrdump {

// Looks at the front of `window` and makes the reader for it; none for what is empty, and none,
// which is damage, for what is no dump. Window and log must outlive the reader.
std::unique_ptr<DumpReader> makeReader(ByteWindow& window, DamageLog& damage, DumpKind& kind);

}  // namespace vdrdump
