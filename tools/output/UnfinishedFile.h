#pragma once

#include <string>

namespace vdrdump {

// A file that takes its place only when it is complete: until then it lies beside it under a name
// of its own, so that two runs with one target do not meet, and goes when this object goes, or
// when a signal ends the program. A link stays one: what it leads to is replaced. What is no plain
// file (a pipe, a device, a descriptor of this process) is no target: it is written in place.
class UnfinishedFile {
public:
    // Whether `path` is written in place.
    static bool isWrittenInPlace(const std::string& path);

    explicit UnfinishedFile(const std::string& path);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    // Open for writing and empty; below 0 where it could not be made, with errno telling why.
    int descriptor() const { return mFile; }
    const std::string& path() const { return mPath; }
    // Puts the file in its place. False, with errno telling why, where that fails.
    bool complete();

private:
    const std::string mTarget;
    std::string mPath;
    int mFile = -1;
    bool mIsComplete = false;
    size_t mSlot = 0;  // among those that a signal removes
};

}  // namespace vdrdump
