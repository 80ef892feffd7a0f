#include <gtest/gtest.h>
#include <json/json.h>

#include <algorithm>
#include <map>

#include "tests/vdrdump/MadeSession.h"
#include "tests/vdrdump/Program.h"

namespace vdrdump::test {
namespace {

// A trace as a viewer loads it.
class Trace {
public:
    explicit Trace(const Program& program) {
        EXPECT_EQ(program.status, 0) << program.err;
        EXPECT_TRUE(Json::Reader().parse(program.out, mRoot)) << program.out.substr(0, 1000);
    }

    // All events of a phase, by what `key` is of each.
    std::map<std::string, std::vector<Json::Value>> by(const char* phase, const char* key) const {
        std::map<std::string, std::vector<Json::Value>> events;
        for (const Json::Value& event : mRoot["traceEvents"]) {
            if (event["ph"] == phase) {
                events[event[key].asString()].push_back(event);
            }
        }
        return events;
    }

    std::vector<std::string> instants() const {
        std::vector<std::string> names;
        for (const auto& [name, events] : by("i", "name")) {
            if (events.front()["s"] == "g") {
                names.push_back(name);
            }
        }
        return names;
    }

private:
    Json::Value mRoot;
};

double endOf(const Json::Value& slice) {
    return slice["ts"].asDouble() + slice["dur"].asDouble();
}

// The third node holds frame 100 so long that five frames wait before it.
TEST(Trace, SlicesDoNotOverlapOnTheirTracks) {
    const TempFolder folder;
    MadeSession session;
    session.work = 170;
    session.also = [](Frame& each) {
        each.videoAction = each.frameNumber == 90 ? 1 : each.frameNumber == 110 ? 2 : 0;
    };
    std::vector<Frame> frames = session.frames(20, 160, 1);
    frames.erase(frames.begin() + (105 - 20));
    const std::string dump = folder.file("session.bin", binaryOf(frames));
    const std::string names = folder.file("names", "7/102/0 noise filter\n");
    const Trace trace(
            run({"export", dump, "--format", "trace", "--lost", "100", "--names", names}));

    size_t slices = 0;
    std::map<std::string, std::vector<std::string>> ofFrame;
    for (auto& [track, events] : trace.by("X", "tid")) {
        std::vector<Json::Value> sorted = events;
        std::sort(sorted.begin(), sorted.end(), [](const Json::Value& a, const Json::Value& b) {
            return a["ts"].asDouble() < b["ts"].asDouble();
        });
        for (size_t i = 0; i < sorted.size(); ++i) {
            EXPECT_TRUE(i == 0 || endOf(sorted[i - 1]) <= sorted[i]["ts"].asDouble())
                    << "track " << track << ", " << sorted[i]["name"];
            ofFrame[sorted[i]["name"].asString()].push_back(track);
        }
        slices += sorted.size();
    }
    EXPECT_EQ(slices, 90 * MadeSession::kNodes) << "frames 40 to 130 but 105";
    EXPECT_EQ(ofFrame["frame 100"].size(), MadeSession::kNodes);
    std::map<std::string, size_t> lanes;
    auto metadata = trace.by("M", "name");
    for (const Json::Value& name : metadata["thread_name"]) {
        const std::string node = name["args"]["name"].asString();
        ++lanes[node.substr(0, node.find(", lane"))];
    }
    EXPECT_EQ(lanes.size(), MadeSession::kNodes);
    EXPECT_GE(lanes["node noise filter (0x7:0x66:0x0)"], 5U);
    EXPECT_EQ(lanes["node 0x7:0x64:0x0"], 1U);

    EXPECT_EQ(trace.by("b", "id").size(), 90U);
    EXPECT_EQ(trace.by("e", "id").size(), 90U);
    EXPECT_EQ(trace.instants(),
              (std::vector<std::string>{"lost: frame 100", "missing: frame 105",
                                        "video has ended, frame 110", "video starts, frame 90"}));
    const auto counters = trace.by("C", "name");
    for (const char* name :
         {"loadAvg1", "memFree kB", "shellBackTemp", "thermalLevel", "cost of HDR"}) {
        EXPECT_EQ(counters.count(name), 1U) << name;
    }
}

TEST(Trace, ShowsWhatIsAskedFor) {
    const TempFolder folder;
    const std::string dump = folder.file("session.bin", binaryOf(MadeSession().frames(20, 160, 2)));
    EXPECT_EQ(run({"export", dump, "--format", "trace"}).status, 1) << "no loss, no frames";
    const Trace chosen(run({"export", dump, "--format", "trace", "--frames", "150:"}));
    EXPECT_EQ(chosen.by("b", "id").size(), 11U);
    EXPECT_TRUE(chosen.instants().empty());
    EXPECT_EQ(run({"export", dump, "--format", "trace", "--field", "zoomRatio"}).status, 2);
    EXPECT_EQ(run({"export", dump, "--format", "csv", "--names", dump}).status, 2);
}

}  // namespace
}  // namespace vdrdump::test
