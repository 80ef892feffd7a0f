#include "benchmarks/Tails.h"

#include <algorithm>

namespace zk::bench {

void Samples::addAll(const Samples& other) {
    mTimes.insert(mTimes.end(), other.mTimes.begin(), other.mTimes.end());
    mWorst = std::max(mWorst, other.mWorst);
}

uint32_t Samples::perMille(double perMille) {
    if (mTimes.empty()) {
        return 0;
    }
    const auto place = static_cast<size_t>(perMille / 1000 * static_cast<double>(mTimes.size()));
    const auto nth =
            mTimes.begin() + static_cast<std::ptrdiff_t>(std::min(place, mTimes.size() - 1));
    std::nth_element(mTimes.begin(), nth, mTimes.end());
    return *nth;
}

void printTails(const std::vector<Tail>& tails, std::FILE* out) {
    std::fprintf(out, "%-30s %7s %-14s %9s %9s %9s %12s %10s\n", "case", "threads", "operation",
                 "p50 ns", "p99", "p99.9", "worst", "frames/s");
    for (const Tail& tail : tails) {
        std::fprintf(out, "%-30s %7u %-14s %9.1f %9u %9u %12u %10.0f\n", tail.name.c_str(),
                     tail.threads, tail.operation.c_str(), tail.p50, tail.p99, tail.p999,
                     tail.worst, tail.framesPerSecond);
    }
}

bool writeTails(const std::vector<Tail>& tails, const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    std::fputs("case,threads,operation,p50_ns,p99_ns,p99.9_ns,worst_ns,frames_per_second\n", file);
    for (const Tail& tail : tails) {
        std::fprintf(file, "%s,%u,%s,%.1f,%u,%u,%u,%.0f\n", tail.name.c_str(), tail.threads,
                     tail.operation.c_str(), tail.p50, tail.p99, tail.p999, tail.worst,
                     tail.framesPerSecond);
    }
    const bool isWritten = std::ferror(file) == 0;
    return std::fclose(file) == 0 && isWritten;
}

}  // namespace zk::bench
