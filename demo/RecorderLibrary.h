#pragma once

#include <string>

#include "recorder/IVideoDataRecoder.h"

namespace demo {

// The recorder's shared library, loaded the way a camera process loads it: by path, one symbol,
// everything else through the virtual table. Never unloaded: its recorder serves the process to
// the end.
class RecorderLibrary {
public:
    // Throws when the library or its symbol is missing.
    static zk::IVideoDataRecoder& load(const std::string& path);
};

}  // namespace demo
