#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/explain/Findings.h"
#include "tools/explain/Lanes.h"
#include "tools/explain/LossCases.h"
#include "tools/explain/nodesOf.h"
#include "tools/output/Output.h"

namespace vdrdump {

// Camera sessions as events that trace viewers draw, three processes for each:
//
//   nodes    a track per node with a slice per frame, from its first to its last stamp, and an
//            instant for each stamp within; a node that has two frames at once has further lanes
//   frames   an asynchronous slice per frame, from its stamp to the last one of its nodes
//   device   counters for load, memory, temperatures, thermal level and costs of algorithms
//
// and instants for losses, frames without a record, video marks and slow allocations. Time begins
// with the earliest stamp of a session; stamps themselves stand in the arguments.
class TraceEvents {
public:
    // Both must outlive this.
    TraceEvents(Output& output, const NodeNames& names) : mOutput(output), mNames(names) {}

    // `shown`: the stretches of frames that were asked for.
    void add(const SessionHistory& history, const std::vector<LossCase>& losses,
             const std::vector<FrameRange>& shown);
    bool isEmpty() const { return mSessions == 0; }
    void finish();

private:
    // Of the session that is being added.
    struct Track {
        uint32_t number = 0;  // of the node
        Lanes lanes;
    };

    void begin(const SessionHistory& history);
    void addNode(uint32_t frame, const NodeStamps& node);
    uint32_t laneOf(const NodeStamps& node);
    void addFrame(uint32_t frame, const Record& record);
    void addMarks(uint32_t frame, const Record& record, double time);
    void addCounters(const Record& record, double time);
    void addCosts(const Record& record, double time);
    void addLosses(const SessionHistory& history, const std::vector<LossCase>& losses);
    void addMissing(const FrameMap& frames, const std::vector<FrameRange>& shown);

    double nodeMicroseconds(uint64_t stamp) const;
    double frameMicroseconds(const Record& record) const;
    // Where the frame would be, had it a record.
    double timeAround(uint32_t frame, const FrameMap& frames) const;

    void event(const char* phase, const std::string& name, uint32_t process, uint32_t track,
               double time, const std::string& more);
    void instant(const std::string& name, double time);
    void counter(const std::string& name, double time, double value);
    void nameOf(const char* what, uint32_t process, uint32_t track, const std::string& name);
    uint32_t process(uint32_t which) const { return mSessions * 3 + which; }

    Output& mOutput;
    const NodeNames& mNames;
    uint32_t mSessions = 0;
    bool mHasEvents = false;

    StampClocks mClocks;
    uint64_t mFirstFrameStamp = 0;
    uint64_t mFirstNodeStamp = 0;
    std::map<NodeIds, Track> mTracks;
};

}  // namespace vdrdump
