#pragma once

#include <optional>
#include <string>

namespace vdrgst {

// What stands in the brackets of GST_TRACERS="vdr(...)".
struct TracerOptions {
    std::string root;            // folder of the device's file tree, absolute
    std::optional<bool> binary;  // whether every record goes into a binary dump file
    std::optional<int> level;    // record level

    // `text` may be null. What cannot be understood is told with a warning and left out. Without a
    // root it is that of the environment (VDR_ROOT), or else the folder "vdr".
    static TracerOptions parse(const char* text);
};

}  // namespace vdrgst
