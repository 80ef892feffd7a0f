#include "demo/ProgressBar.h"

#include <cinttypes>
#include <cstdio>

#include "demo/Terminal.h"

namespace demo {
namespace {

constexpr int kWidth = 30;
constexpr char kFull[] = "##############################";
constexpr char kEmpty[] = "..............................";
static_assert(sizeof(kFull) == kWidth + 1 && sizeof(kEmpty) == kWidth + 1);

}  // namespace

ProgressBar::ProgressBar(uint32_t total) : mTotal(total), mVisible(Terminal::isTerminal()) {}

ProgressBar::~ProgressBar() {
    if (mVisible) {
        std::printf("\r\033[K");
        std::fflush(stdout);
    }
}

void ProgressBar::show(uint32_t done) {
    const int percent = static_cast<int>(uint64_t{done} * 100 / mTotal);
    if (!mVisible || percent == mPercentShown) {
        return;
    }
    mPercentShown = percent;
    const int full = percent * kWidth / 100;
    std::printf("\r[%.*s%.*s] frame %" PRIu32 " of %" PRIu32, full, kFull, kWidth - full, kEmpty,
                done, mTotal);
    std::fflush(stdout);
}

}  // namespace demo
