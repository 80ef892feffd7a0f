#include "demo/FolderState.h"

#include <dirent.h>
#include <sys/stat.h>

#include <utility>

namespace demo {

FolderState::FolderState(std::string folder) : mFolder(std::move(folder)) {
    DIR* handle = opendir(mFolder.c_str());
    if (handle == nullptr) {
        return;
    }
    while (const dirent* found = readdir(handle)) {
        struct stat info {};
        const std::string name = found->d_name;
        if (stat(pathOf(name).c_str(), &info) == 0 && S_ISREG(info.st_mode)) {
            mEntries[name] = {static_cast<uint64_t>(info.st_size), info.st_mode & 07777U,
                              info.st_mtim};
        }
    }
    closedir(handle);
}

std::vector<std::string> FolderState::changedSince(const FolderState& before) const {
    std::vector<std::string> changed;
    for (const auto& [name, now] : mEntries) {
        const auto old = before.mEntries.find(name);
        if (old == before.mEntries.end() || old->second.size != now.size ||
            old->second.written.tv_sec != now.written.tv_sec ||
            old->second.written.tv_nsec != now.written.tv_nsec) {
            changed.push_back(name);
        }
    }
    return changed;
}

FolderState::Entry FolderState::entryOf(const std::string& name) const {
    const auto found = mEntries.find(name);
    return found != mEntries.end() ? found->second : Entry{};
}

uint64_t FolderState::sizeOf(const std::string& name) const {
    return entryOf(name).size;
}

uint32_t FolderState::modeOf(const std::string& name) const {
    return entryOf(name).mode;
}

}  // namespace demo
