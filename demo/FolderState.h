#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

namespace demo {

// The files of a folder at one moment, to tell what has been written since.
class FolderState {
public:
    // A folder that cannot be read is empty.
    explicit FolderState(std::string folder);

    // Names, in order, of files that are new or have been written to since `before`.
    std::vector<std::string> changedSince(const FolderState& before) const;
    uint64_t sizeOf(const std::string& name) const;  // 0 where there is none
    // Permission bits.
    uint32_t modeOf(const std::string& name) const;
    std::string pathOf(const std::string& name) const { return mFolder + "/" + name; }
    const std::string& folder() const { return mFolder; }

private:
    struct Entry {
        uint64_t size = 0;
        uint32_t mode = 0;
        timespec written{};
    };

    Entry entryOf(const std::string& name) const;

    const std::string mFolder;
    std::map<std::string, Entry> mEntries;
};

}  // namespace demo
