#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "demo/Findings.h"
#include "demo/FolderState.h"
#include "demo/FrameFactory.h"
#include "demo/LossForecast.h"

namespace demo {

// Reads the session's frame-loss text files back: the right ones, the right frames in each.
class TextFileCheck {
public:
    struct File {
        LossForecast::File expected;
        std::string path;
        uint64_t size = 0;
        uint32_t mode = 0;
        uint32_t lines = 0;
        std::string firstLine;
    };

    // To be made before the session: remembers what lies in `folder`.
    explicit TextFileCheck(const std::string& folder) : mBefore(folder) {}

    void run(const LossForecast& forecast, const FrameFactory& factory, Findings& findings);

    const std::vector<File>& files() const { return mFiles; }

private:
    static std::string nameOf(const LossForecast::File& file);
    static void read(File& file, const FrameFactory& factory, Findings& findings);
    static void checkLine(const std::string& line, const std::string& path, uint32_t frame,
                          const FrameFactory& factory, Findings& findings);

    const FolderState mBefore;
    std::vector<File> mFiles;
};

}  // namespace demo
