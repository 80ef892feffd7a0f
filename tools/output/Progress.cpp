#include "tools/output/Progress.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace vdrdump {
namespace {

constexpr double kMiB = 1024.0 * 1024.0;

// 0 when one of the files has no size, as a pipe has none.
uint64_t totalSize(const std::vector<std::string>& paths) {
    uint64_t total = 0;
    for (const std::string& path : paths) {
        struct stat status {};
        const int result = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
        if (result == 0 && !S_ISREG(status.st_mode)) {
            return 0;
        }
        total += result == 0 ? static_cast<uint64_t>(status.st_size) : 0;
    }
    return total;
}

}  // namespace

Progress::Progress(const std::vector<std::string>& paths, bool wanted)
      : mIsShown(wanted && isatty(STDERR_FILENO) == 1) {
    if (mIsShown) {
        mTotalBytes = totalSize(paths);
    }
}

void Progress::advance(uint64_t bytes) {
    mBytes += bytes;
    if (mIsShown && Clock::now() >= mNextDraw) {
        draw();
    }
}

void Progress::draw() {
    const auto now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - mStart).count();
    const double done = static_cast<double>(mBytes);
    if (mTotalBytes != 0) {
        constexpr int kWidth = 40;
        const double share = std::min(1.0, done / static_cast<double>(mTotalBytes));
        const std::string bar(static_cast<size_t>(share * kWidth), '#');
        std::fprintf(stderr, "\r[%-*s] %3.0f %%  %.0f MiB/s\033[K", kWidth, bar.c_str(),
                     share * 100, done / kMiB / seconds);
    } else {
        std::fprintf(stderr, "\r%.0f MiB read  %.0f MiB/s\033[K", done / kMiB,
                     done / kMiB / seconds);
    }
    std::fflush(stderr);
    mIsDrawn = true;
    mNextDraw = now + std::chrono::milliseconds(100);
}

void Progress::clear() {
    if (mIsDrawn) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        mIsDrawn = false;
    }
}

}  // namespace vdrdump
