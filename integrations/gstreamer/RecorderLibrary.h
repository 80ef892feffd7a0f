#pragma once

#include "integrations/gstreamer/TracerOptions.h"
#include "recorder/IVideoDataRecoder.h"

namespace vdrgst {

// The recorder, loaded at run time and not linked: it reads its switches while it is loaded, and by
// then they must be set. Never unloaded.
class RecorderLibrary {
public:
    // Makes the file tree below the root, sets the switches and loads the library; null, with an
    // error in the debug log, where one of that is not possible. Once per process.
    static zk::IVideoDataRecoder* load(const TracerOptions& options);
};

}  // namespace vdrgst
