#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace demo {

// The files of a folder and their sizes at one moment, to tell what has been written since.
class FolderState {
public:
    struct File {
        std::string path;
        uint64_t size;
    };

    // A folder that cannot be read is empty.
    explicit FolderState(const std::string& folder);

    // In the order of their names.
    std::vector<File> writtenSince(const FolderState& before) const;

private:
    std::map<std::string, uint64_t> mSizes;  // by path
};

}  // namespace demo
