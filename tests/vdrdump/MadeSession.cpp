#include "tests/vdrdump/MadeSession.h"

#include <algorithm>
#include <cstring>
#include <deque>

namespace vdrdump::test {
namespace {

constexpr double kInterval = 33.333333;
constexpr double kWork[MadeSession::kNodes] = {6, 12, 9, 14, 3};

class Noise {
public:
    Noise(uint32_t seed, double spread) : mRandom(seed), mSpread(spread) {}
    double around(double value) {
        return std::max(0.0, value * (1 + mSpread * std::normal_distribution<>()(mRandom)));
    }

private:
    std::mt19937 mRandom;
    const double mSpread;
};

uint64_t ticks(double milliseconds) {
    return static_cast<uint64_t>(milliseconds * MadeSession::kMillisecond);
}

void fillStatus(Frame& frame, Noise& noise) {
    frame.masterCameraId = 1;
    frame.zoomRatio = 1;
    frame.captureType = 1;
    frame.sysStatusInfo.loadAvg1 = static_cast<float>(noise.around(4));
    frame.sysStatusInfo.memFree = static_cast<uint32_t>(noise.around(1200000));
    frame.sysStatusInfo.shellBackTemp = 34000;
    frame.sysStatusInfo.thermalLevel = 1;
}

void addCost(Frame& frame, const char* name, double cost) {
    auto& algorithm = frame.pluginAlgoCostTime[frame.pluginAlgoCostTimeCount++];
    std::strncpy(algorithm.name, name, sizeof(algorithm.name) - 1);
    algorithm.cost = static_cast<uint8_t>(cost);
}

}  // namespace

std::vector<Frame> MadeSession::frames(uint32_t first, uint32_t last, uint32_t seed) const {
    Noise noise(seed, spread);
    double freeAt[kNodes] = {};
    std::deque<double> steadily(atOnce);  // when the third node is through with the latest ones
    std::vector<Frame> frames;
    for (uint32_t number = first; number <= last; ++number) {
        Frame each = frame(number);
        const bool isHit = number == hit;
        const double due = (number - number % burst) * kInterval + number % burst;
        const double taken = 1e6 + due + noise.around(1) + (number >= hit ? sensorDelay : 0);
        each.cslInfo = {number, ticks(taken)};
        fillStatus(each, noise);
        double at = taken;
        for (uint32_t i = 0; i < kNodes; ++i) {
            const bool isHere = isHit && i == 2;
            if (i == 2 && steadyWork > 0) {
                freeAt[2] = steadily.front();
                if (freeAt[2] > at + kInterval * burst) {
                    break;
                }
            }
            const double started =
                    std::max(at, freeAt[i]) + noise.around(0.2) + (isHere ? wait : 0);
            const double finished = started +
                                    noise.around(i == 2 && steadyWork > 0 ? steadyWork : kWork[i]) *
                                            (number >= slowFrom ? slowness : 1) +
                                    (isHere ? work : 0);
            const double handedOn = finished + noise.around(0.05);
            each.nodeInfo[each.nodeInfoCount++] = {
                    {7, 100 + i, 0}, {ticks(at), ticks(started), ticks(finished), ticks(handedOn)}};
            at = freeAt[i] = handedOn;
            if (i == 2) {
                steadily.push_back(handedOn);
                steadily.pop_front();
            }
            if (isHere && isStuck) {
                each.nodeInfo[i].stamps[2] = each.nodeInfo[i].stamps[3] = 0;
                break;
            }
        }
        for (uint32_t i = each.nodeInfoCount; i < kNodes; ++i) {
            each.nodeInfo[each.nodeInfoCount++] = {{7, 100 + i, 0}, {}};
        }
        addCost(each, "HDR", noise.around(8) + (isHit ? cost : 0));
        addCost(each, "FACE", noise.around(4));
        if (also) {
            also(each);
        }
        frames.push_back(each);
    }
    return frames;
}

}  // namespace vdrdump::test
