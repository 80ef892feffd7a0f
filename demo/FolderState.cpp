#include "demo/FolderState.h"

#include <filesystem>
#include <system_error>

namespace demo {
namespace fs = std::filesystem;

FolderState::FolderState(const std::string& folder) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_regular_file(error)) {
            mSizes[entry.path().string()] = entry.file_size(error);
        }
    }
}

std::vector<FolderState::File> FolderState::writtenSince(const FolderState& before) const {
    std::vector<File> files;
    for (const auto& [path, size] : mSizes) {
        const auto old = before.mSizes.find(path);
        if (old == before.mSizes.end() || old->second != size) {
            files.push_back({path, size});
        }
    }
    return files;
}

}  // namespace demo
