#include <gtest/gtest.h>
#include <json/json.h>

#include <algorithm>
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
        {"SlowNode", [](auto& s) { s.work = 60; }, {"node 0x7:0x66:0x0 worked on it for "}},
        {"SlowNodeEarlier",
         [](auto& s) {
             s.work = 120;
             s.hit = kLost - 4;
         },
         {"node 0x7:0x66:0x0 worked on frame 96 for "}},
        {"LongWait", [](auto& s) { s.wait = 200; }, {"it waited 200", "before node 0x7:0x66:0x0"}},
        {"Stuck",
         [](auto& s) { s.isStuck = true; },
         {"node 0x7:0x66:0x0 started on it and never finished"}},
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
         {"no record, and nothing stands out", "frames 99 and 101 are 6"},
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

struct Pace {
    const char* name;
    double work;
    size_t atOnce;
    uint32_t burst;
    bool isTooSlow;
};

constexpr Pace kPaces[] = {
        {"Slow", 80, 1, 1, true},
        {"AlmostKeepsUp", 38, 1, 1, true},
        {"SlowForManyFrames", 230, 1, 1, true},
        {"SlowWithBursts", 80, 1, 6, true},
        {"KeepsUp", 32, 1, 1, false},
        {"SeveralAtOnce", 80, 3, 1, false},
        {"KeepsUpWithBursts", 20, 1, 6, false},
};

// The latest by the 100th; of a session without any that one.
uint32_t lostOf(const std::vector<Frame>& frames) {
    uint32_t lost = kLost;
    for (const Frame& each : frames) {
        lost = each.frameNumber <= kLost && MadeSession::isLost(each) ? each.frameNumber : lost;
    }
    return lost;
}

// Frames are lost again and again, and none of them is unlike the others. Their records tell how
// far they came, or there are none of them.
TEST(Explain, NamesTheNodeThatCannotKeepUp) {
    for (const Pace& pace : kPaces) {
        MadeSession session;
        session.steadyWork = pace.work;
        session.atOnce = pace.atOnce;
        session.burst = pace.burst;
        for (uint32_t seed = 0; seed < 40; ++seed) {
            std::vector<Frame> frames =
                    session.frames(kLost - 30, seed % 2 == 0 ? kLost : kLost + 30, seed);
            const uint32_t lost = lostOf(frames);
            if (seed % 4 < 2) {
                frames.erase(std::remove_if(frames.begin(), frames.end(), MadeSession::isLost),
                             frames.end());
            }
            const Findings findings = analyseLoss({lost, lost}, mapOf(frames));
            const std::string cause = Phrases(findings, NodeNames()).cause();
            SCOPED_TRACE(std::string(pace.name) + ", seed " + std::to_string(seed) + ": " + cause);
            ASSERT_EQ(findings.bottleneck.has_value(), pace.isTooSlow);
            if (pace.isTooSlow) {
                EXPECT_NEAR(findings.bottleneck->work, pace.work, pace.work / 5);
                EXPECT_EQ(findings.bottleneck->node, (NodeIds{7, 102, 0}));
            }
            if (pace.isTooSlow && pace.burst == 1) {
                EXPECT_NEAR(findings.bottleneck->interval, 33.3, 1);
                EXPECT_NE(cause.find("node 0x7:0x66:0x0 works "), std::string::npos);
                EXPECT_NE(cause.find(" ms on each frame, and frames come every 3"),
                          std::string::npos);
            }
        }
    }
}

TEST(Explain, NodeOfCapturesNeedNotKeepUp) {
    MadeSession session;
    session.also = [](Frame& each) {
        for (size_t j = 0; j < 4; ++j) {
            uint64_t stamp = each.nodeInfo[4].stamps[j] + (j < 2 ? 0 : 80000000);
            stamp = each.frameNumber % 6 == 0 ? stamp : 0;
            each.nodeInfo[4].stamps[j] = stamp;
        }
    };
    EXPECT_FALSE(analyseLoss({kLost, kLost}, mapOf(session.frames(70, 130, 1))).bottleneck);
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

Json::Value explain(std::vector<std::string> arguments, int status = 0) {
    arguments.insert(arguments.begin(), {"explain", "--json"});
    const Program program = run(arguments);
    EXPECT_EQ(program.status, status) << program.err;
    Json::Value value;
    EXPECT_TRUE(Json::Reader().parse(program.out, value)) << program.out;
    return value;
}

// "100 fileName log" for each loss: its frames and how it is known.
std::vector<std::string> lossesOf(const Json::Value& explanation) {
    std::vector<std::string> losses;
    for (const Json::Value& loss : explanation["losses"]) {
        const Json::Value& frames = loss["frames"];
        std::string text = frames[0].asString();
        text += frames[0] == frames[1] ? "" : "-" + frames[1].asString();
        for (const Json::Value& each : loss["knownBy"]) {
            text += " " + each["from"].asString();
        }
        losses.push_back(text);
    }
    return losses;
}

std::vector<Frame> without(std::vector<Frame> frames, const std::vector<uint32_t>& lost) {
    const auto isLost = [&lost](const Frame& each) {
        return std::find(lost.begin(), lost.end(), each.frameNumber) != lost.end();
    };
    frames.erase(std::remove_if(frames.begin(), frames.end(), isLost), frames.end());
    return frames;
}

using Losses = std::vector<std::string>;
constexpr char kTextName[] = "VIDEO_DEBUG_20240301_120130_00000100.txt";

TEST(Explain, FilesOfOneSessionAreOneHistory) {
    const TempFolder folder;
    MadeSession session;
    session.work = 80;
    const std::string text = folder.file(kTextName, textOf(session.frames(70, 100, 1)));
    // The same noise in the same frames only from the same start: the text is cut out of it.
    const std::vector<Frame> all = session.frames(40, 140, 2);
    const std::vector<Frame> around(all.begin() + 30, all.begin() + 61);
    const std::string same = folder.file("b_" + std::string(kTextName), textOf(around));
    const std::string binary =
            folder.file("session.bin", binaryOf(without(all, {85, 90, 120, 121})));

    const Json::Value both = explain({binary, same});
    EXPECT_EQ(lossesOf(both), (Losses{"100 fileName", "120-121 gap"})) << "the text has 85 and 90";
    EXPECT_EQ(both["losses"][0]["files"].size(), 2U);
    EXPECT_EQ(both["losses"][0]["recordsBefore"], 30);
    EXPECT_EQ(both["losses"][0]["recordsBehind"], 28);
    EXPECT_EQ(both["losses"][0]["cause"]["value"]["node"]["ids"][1], 102);
    EXPECT_EQ(both["losses"][0]["cause"]["value"]["values"], 21);

    const Json::Value apart = explain({text, binary});
    EXPECT_EQ(lossesOf(apart), (Losses{"100 fileName", "85 gap", "90 gap", "120-121 gap"}));
    EXPECT_EQ(apart["losses"][0]["recordsBehind"], 0) << "of another session";

    EXPECT_EQ(lossesOf(explain({binary, "--lost", "97"})), (Losses{"97 user"}));
}

TEST(Explain, TwoTextsOfOneSessionGoOnFromEachOther) {
    const TempFolder folder;
    const std::vector<Frame> all = MadeSession().frames(40, 140, 3);
    const auto part = [&all](size_t first, size_t last) {
        return textOf({all.begin() + static_cast<std::ptrdiff_t>(first - 40),
                       all.begin() + static_cast<std::ptrdiff_t>(last - 39)});
    };
    const std::string first = folder.file(kTextName, part(70, 100));
    const std::string second =
            folder.file("VIDEO_DEBUG_20240301_120131_00000135.txt", part(105, 135));
    const Json::Value both = explain({second, first});
    EXPECT_EQ(lossesOf(both), (Losses{"100 fileName", "135 fileName"}));
    EXPECT_EQ(both["losses"][0]["recordsBehind"], 26);
}

TEST(Explain, LossesOfALog) {
    const TempFolder folder;
    const std::string log = folder.file(
            "logcat.txt",
            "03-01 12:01:30.500  2791  2793 I VDRPERF : VDR::ReceiveEvent, rec frame drop "
            "notification:1709290890500000, 100\n"
            "I/VDRPERF( 2791): VDR::ReceiveEvent, rec frame drop notification:77, 7, mFrameNumber "
            "less than 10!\n"
            "03-01 12:01:31.000  2791  2793 I OTHER : rec frame drop notification:1, 101\n"
            "03-01 12:01:32.000  2791  2793 I VDRPERF : rec frame drop notification:, 102\n");
    const std::vector<Frame> all = MadeSession().frames(40, 140, 4);
    const std::string binary = folder.file("session.bin", binaryOf(without(all, {99, 100, 101})));
    const Json::Value explained = explain({binary, "--log", log});
    EXPECT_EQ(lossesOf(explained), (Losses{"99-101 log gap", "7 log"}));
    EXPECT_EQ(explained["losses"][0]["knownBy"][0]["time"], "03-01 12:01:30.500");
    EXPECT_EQ(explained["losses"][1]["cause"]["kind"], "unknown");
    EXPECT_EQ(run({"explain", binary, "--log", folder.path("none")}).status, 1);
}

TEST(Explain, SaysNoMoreThanIsKnown) {
    const TempFolder folder;
    std::vector<Frame> frames;
    for (uint32_t number = 60; number < 140; ++number) {
        frames.push_back(frame(number));
    }
    const std::string zeros = folder.file("zeros.bin", binaryOf(without(frames, {100})));
    const std::string said = run({"explain", zeros}).out;
    EXPECT_EQ(said.rfind("Frame 100: nothing can be said: the records hold no values", 0), 0U);
    for (const char* unknown : {"interval  ", "latency  ", "device  ", "changed  "}) {
        EXPECT_EQ(said.find(unknown), std::string::npos) << said;
    }
    const Json::Value explained = explain({zeros});
    EXPECT_TRUE(explained["losses"][0]["interval"].isNull());
    EXPECT_GT(explained["losses"][0]["notKnown"].size(), 10U);

    const std::string made = binaryOf(MadeSession().frames(70, 100, 5));
    const std::string cut = folder.file("cut.bin", made.substr(0, made.size() - 3000));
    const Json::Value damaged = explain({cut, "--lost", "100"}, 1);
    EXPECT_EQ(damaged["losses"][0]["damagedRecords"], 1);
    EXPECT_TRUE(damaged["losses"][0]["stuckAt"].isNull()) << "cut, not stuck";
    const std::string empty = folder.file(kTextName, "");
    EXPECT_EQ(lossesOf(explain({empty}, 1)), (Losses{"100 fileName"}));
}

TEST(Explain, TakesRecordsOfAnyContent) {
    const TempFolder folder;
    std::mt19937_64 random(1);
    for (int round = 0; round < 20; ++round) {
        std::vector<Frame> frames;
        for (uint32_t number = 90; number < 120; ++number) {
            frames.push_back(randomFrame(random, 60));
            frames.back().frameNumber = number;
        }
        frames.erase(frames.begin() + static_cast<std::ptrdiff_t>(random() % frames.size()));
        const std::string dump = folder.file("any.bin", binaryOf(frames));
        EXPECT_FALSE(explain({dump, "--lost", "105"})["losses"].empty());
        EXPECT_EQ(run({"explain", dump, "--lost", "105"}).status, 0);
    }
}

// Nodes on another clock than frames, in another unit.
TEST(Explain, TellsClocksApart) {
    MadeSession session;
    session.work = 80;
    session.also = [](Frame& each) {
        for (size_t i = 0; i < each.nodeInfoCount; ++i) {
            for (size_t j = 0; j < 4; ++j) {
                each.nodeInfo[i].stamps[j] = each.nodeInfo[i].stamps[j] / 1000 + 5000000000;
            }
        }
    };
    const Findings findings = analyseLoss({kLost, kLost}, mapOf(session.frames(70, 100, 6)));
    EXPECT_EQ(findings.clocks.ticksPerSecond, 1e9);
    EXPECT_EQ(findings.clocks.nodeTicksPerSecond, 1e6);
    EXPECT_FALSE(findings.clocks.nodesShareIt);
    ASSERT_TRUE(findings.slowestNode);
    EXPECT_NEAR(findings.slowestNode->value, 89, 6) << "milliseconds";
    EXPECT_EQ(findings.cause.kind, Cause::Kind::StandsOut);
}

// 30,000 frames a second, which a guess takes for 30, and which reach the first node 150 frames
// later.
TEST(Explain, TakesTheStatedClock) {
    const TempFolder folder;
    std::vector<Frame> frames = MadeSession().frames(70, 130, 8);
    for (Frame& each : frames) {
        each.cslInfo.stamp /= 1000;
        for (size_t i = 0; i < each.nodeInfoCount; ++i) {
            for (size_t j = 0; j < 4; ++j) {
                each.nodeInfo[i].stamps[j] = each.nodeInfo[i].stamps[j] / 1000 + 5000000;
            }
        }
    }
    const std::string dump = folder.file("fast.bin", binaryOf(without(frames, {kLost})));
    const auto clocksBy = [&](const std::string& names) {
        return explain({dump, "--names", folder.file("names", names)})["losses"][0]["clocks"];
    };
    const Json::Value stated = clocksBy("7/101/0 scaler\n clock\tnanoseconds\r\n");
    EXPECT_EQ(stated["ticksPerSecond"], 1e9);
    EXPECT_EQ(stated["nodeTicksPerSecond"], 1e9);
    EXPECT_NEAR(stated["frameInterval"].asDouble(), 0.0333, 0.001) << "milliseconds";
    EXPECT_TRUE(stated["oneClock"]["node"].asBool());
    EXPECT_TRUE(stated["isStated"].asBool());
    const Json::Value guessed = clocksBy("7/101/0 scaler\n");
    EXPECT_NEAR(guessed["frameInterval"].asDouble(), 33.3, 1);
    EXPECT_FALSE(guessed["oneClock"]["node"].asBool());
}

TEST(Explain, NamesOfNodes) {
    const TempFolder folder;
    MadeSession session;
    session.isStuck = true;
    const std::string dump = folder.file(kTextName, textOf(session.frames(70, 100, 7)));
    const std::string names = folder.file(
            "names", "# nodes\n\n7/101/0 scaler\n0x7, 102 0x0\tnoise \x1b[1m filter\r\n");
    const std::string said = run({"explain", dump, "--names", names}).out;
    EXPECT_EQ(said.rfind("Frame 100: node noise \\x1b[1m filter (0x7:0x66:0x0) started on it", 0),
              0U)
            << said;
    for (const char* wrong : {"7/101 scaler", "7/101/0", "7/101/0scaler", "seven/1/2 a",
                              "clock hours", "clock", "clock nanoseconds 2"}) {
        const Program program = run({"explain", dump, "--names", folder.file("wrong", wrong)});
        EXPECT_EQ(program.status, 1) << wrong;
        EXPECT_NE(program.err.find("wrong:1: expected three ids"), std::string::npos)
                << program.err;
    }
}

}  // namespace
}  // namespace vdrdump::test
