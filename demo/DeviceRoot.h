#pragma once

#include <string>

#include "demo/Options.h"

namespace demo {

// The folder that stands for the device: what its init script, its properties and its log daemon
// would have set up before a camera process starts.
class DeviceRoot {
public:
    explicit DeviceRoot(const Options& options);

    // To be called before the library is loaded: the recorder reads properties right then. Throws
    // when a folder or the log cannot be made.
    void prepare() const;

    std::string dumpFolder() const { return mFolder + "/data/vendor/camera"; }
    std::string lossFolder() const { return mFolder + "/data/vendor/camera_frame_lost"; }
    std::string logPath() const { return mFolder + "/logcat.txt"; }
    std::string namesPath() const { return mFolder + "/nodes.txt"; }
    std::string pagePath() const { return mFolder + "/loss.html"; }

private:
    void showMachine(const std::string& treePath) const;
    void openLog() const;

    std::string mFolder;  // without a slash at the end
    const std::string mLevel;
};

}  // namespace demo
