#include "demo/ProgressLine.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

namespace demo {

ProgressLine::ProgressLine(uint32_t total) : mTotal(total), mVisible(isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() {
    if (mVisible) {
        std::fprintf(stderr, "\r\033[K");
    }
}

void ProgressLine::show(uint32_t done) {
    const auto percent = static_cast<uint32_t>(uint64_t{done} * 100 / mTotal);
    if (mVisible && percent != mPercentShown) {
        mPercentShown = percent;
        std::fprintf(stderr, "\rframe %" PRIu32 " of %" PRIu32, done, mTotal);
    }
}

}  // namespace demo
