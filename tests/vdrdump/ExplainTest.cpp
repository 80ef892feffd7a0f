#include <gtest/gtest.h>
#include <json/json.h>

#include <cstring>

#include "tests/vdrdump/MadeSession.h"
#include "tests/vdrdump/Program.h"
#include "tools/explain/Phrases.h"
#include "tools/explain/analyseLoss.h"

namespace vdrdump::test {
namespace {

constexpr uint32_t kLost = MadeSession::kLost;

FrameMap mapOf(const std::vector<Frame>& frames) {
    const std::string bytes = binaryOf(frames);
    FrameMap map;
    for (size_t i = 0; i < frames.size(); ++i) {
        Record record;
        record.bytes = reinterpret_cast<const uint8_t*>(&bytes[i * zk::kFrameRecordSize]);
        record.known = sizeof(Layout);
        map[frames[i].frameNumber] = std::make_shared<StoredRecord>(record);
    }
    return map;
}

std::string causeOf(const FrameMap& frames) {
    const Findings findings = analyseLoss({kLost, kLost}, frames);
    return Phrases(findings, NodeNames()).cause();
}

// What happens to the session, and what the first line has to say. "100 or it": the lost frame is
// called so where it has a record.
struct Planted {
    const char* name;
    void (*plant)(MadeSession& session);
    std::vector<const char*> says;
    bool hasRecord = true;
};

void onlyIn(MadeSession& session, uint32_t from, void (*change)(Frame& frame)) {
    session.also = [from, change](Frame& frame) {
        if (frame.frameNumber >= from) {
            change(frame);
        }
    };
}

void addSlowAllocation(Frame& frame) {
    if (frame.frameNumber == kLost) {
        auto& item = frame.memoryAllocTimeoutInfo;
        std::strcpy(item.itemName, "preview");
        item.allocSizeKB = 4096;
        item.allocTimeSec = 3;
    }
}

const Planted kPlanted[] = {
        {"SlowNode", [](auto& s) { s.work = 60; }, {"node 7/102/0 worked on it for "}},
        {"SlowNodeEarlier",
         [](auto& s) {
             s.work = 120;
             s.hit = kLost - 4;
         },
         {"node 7/102/0 worked on frame 96 for "}},
        {"LongWait", [](auto& s) { s.wait = 200; }, {"it waited 200", "before node 7/102/0"}},
        {"Stuck",
         [](auto& s) { s.isStuck = true; },
         {"node 7/102/0 started on it and never finished"}},
        {"SlowAlgorithm",
         [](auto& s) {
             s.cost = 90;
             s.work = 90;
         },
         {"plug-in algorithm HDR cost ", " in it"}},
        {"SlowAllocation",
         [](auto& s) {
             s.wait = 200;
             onlyIn(s, 0, addSlowAllocation);
         },
         {"slow allocation of preview, 4096 KiB in 3 s", "frame 100", "waited 200"}},
        {"CameraSwitch",
         [](auto& s) { onlyIn(s, kLost - 2, [](Frame& f) { f.masterCameraId = 3; }); },
         {"the camera changed from 1 to 3 in frame 98"}},
        {"CameraSwitchThatDelays",
         [](auto& s) {
             s.sensorDelay = 90;
             onlyIn(s, kLost - 1, [](Frame& f) { f.masterCameraId = 3; });
         },
         {"the camera changed from 1 to 3 in frame 99", "the sensor was late: it came "}},
        {"ThermalJump",
         [](auto& s) {
             onlyIn(s, kLost - 8, [](Frame& f) { f.sysStatusInfo.thermalLevel = 6; });
             s.slowFrom = kLost - 8;
             s.slowness = 2;
         },
         {"the thermal level rose from 1 to 6 in frame 92", "times as slow"}},
        {"AllSlow",
         [](auto& s) {
             s.slowFrom = kLost - 8;
             s.slowness = 2;
         },
         {"all nodes have become slow"}},
        {"LateSensor",
         [](auto& s) { s.sensorDelay = 70; },
         {"the sensor was late: it came 10", "(median 33."}},
        {"LostWithoutRecord",
         [](auto&) {},
         {"it has no record, and nothing stands out", "frames 99 and 101 are 6"},
         false},
        {"LostWithoutRecordAndLateSensor",
         [](auto& s) {
             s.hit = kLost + 1;
             s.sensorDelay = 70;
         },
         {"the sensor was late", "frames 99 and 101 are 13"},
         false},
};

// With and without the frames behind the loss, as binary dumps and frame-loss texts have them.
TEST(Explain, NamesThePlantedCauseInAnyNoise) {
    for (const Planted& planted : kPlanted) {
        MadeSession session;
        planted.plant(session);
        for (uint32_t seed = 0; seed < 10; ++seed) {
            for (const uint32_t last : {kLost, kLost + 30}) {
                FrameMap frames = mapOf(session.frames(kLost - 30, last, seed));
                if (!planted.hasRecord) {
                    if (last == kLost) {
                        continue;  // a text whose lost frame has no record ends before it
                    }
                    frames.erase(kLost);
                }
                const std::string cause = causeOf(frames);
                for (const char* part : planted.says) {
                    EXPECT_NE(cause.find(part), std::string::npos)
                            << planted.name << ", seed " << seed << ", up to frame " << last << ": "
                            << cause;
                }
            }
        }
    }
}

TEST(Explain, IsSilentAboutNoise) {
    size_t alarms = 0;
    for (uint32_t seed = 0; seed < 1000; ++seed) {
        MadeSession session;
        session.spread = seed % 2 == 0 ? 0.05 : 0.2;
        const uint32_t last = seed % 4 < 2 ? kLost : kLost + 30;
        const Findings findings =
                analyseLoss({kLost, kLost}, mapOf(session.frames(kLost - 30, last, seed)));
        const bool isSilent =
                findings.standsOut.empty() && findings.cause.kind == Cause::Kind::None;
        alarms += isSilent ? 0 : 1;
    }
    EXPECT_LE(alarms, 10U) << "of 1000 sessions";
}

}  // namespace
}  // namespace vdrdump::test
