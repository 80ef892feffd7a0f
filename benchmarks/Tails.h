#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace zk::bench {

class Device;

// Times of one operation, in nanoseconds, as many as there is room for; what comes later takes the
// place of what came first. One thread.
class Samples {
public:
    explicit Samples(size_t room) { mTimes.reserve(room); }

    void add(uint32_t nanoseconds) {
        if (mTimes.size() < mTimes.capacity()) {
            mTimes.push_back(nanoseconds);
        } else {
            mTimes[mNext++ % mTimes.size()] = nanoseconds;
        }
        mWorst = nanoseconds > mWorst ? nanoseconds : mWorst;
    }
    void addAll(const Samples& other);
    // Of all times, the one below which so many of a thousand lie. 0 where there are none.
    uint32_t perMille(double perMille);
    uint32_t worst() const { return mWorst; }

private:
    std::vector<uint32_t> mTimes;
    size_t mNext = 0;
    uint32_t mWorst = 0;
};

// A line of the second table: how long one operation took in one case.
struct Tail {
    std::string name;  // of the case
    unsigned threads;
    std::string operation;
    double p50;  // of one operation, ns; all else of a batch, in which a wait counts whole
    uint32_t p99;
    uint32_t p999;
    uint32_t worst;
    double framesPerSecond;  // of all threads together
};

// Pipelines of one, two and four threads, beside the same work on one lock. `seconds`: of each.
std::vector<Tail> measureTails(Device& device, double seconds);
// A pipeline of 30 frames a second while the disk takes its time for each write.
std::vector<Tail> measureSlowDisk(Device& device, double seconds);

void printTails(const std::vector<Tail>& tails, std::FILE* out);
bool writeTails(const std::vector<Tail>& tails, const std::string& path);

}  // namespace zk::bench
