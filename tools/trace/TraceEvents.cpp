#include "tools/trace/TraceEvents.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

#include "tools/explain/clocksOf.h"
#include "tools/explain/deviceState.h"
#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

// Processes of a session.
constexpr uint32_t kNodeTracks = 0;
constexpr uint32_t kFrameTracks = 1;
constexpr uint32_t kDevice = 2;

constexpr uint32_t kMostLanes = 1000;    // of a node
constexpr uint32_t kMostMissing = 4096;  // frames that are marked

// Costs and these columns of the status become counters.
constexpr const char* kCounters[] = {
        "sysStatusInfo_cpuUsage",      "sysStatusInfo_loadAvg1",
        "sysStatusInfo_memFree",       "sysStatusInfo_memAvailable",
        "sysStatusInfo_usedMem",       "sysStatusInfo_shellFrontTemp",
        "sysStatusInfo_shellBackTemp", "sysStatusInfo_shellFrameTemp",
        "sysStatusInfo_thermalLevel",
};

std::string quoted(const std::string& text) {
    return Json::valueToQuotedString(text.c_str());
}

std::string numberText(double value) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.3f", value);
    return text;
}

std::string stampText(uint64_t stamp) {
    return quoted(std::to_string(stamp));  // as a number it would be rounded
}

std::string titleOf(const SessionHistory& history) {
    const std::string& path = history.paths.front();
    return path.substr(path.rfind('/') + 1) +
           (history.session > 1 ? ", session " + std::to_string(history.session) : "");
}

uint64_t lastStampOf(const Record& record) {
    uint64_t last = 0;
    for (const NodeStamps& node : nodesOf(record)) {
        last = std::max(last, node.last());
    }
    return last;
}

}  // namespace

void TraceEvents::add(const SessionHistory& history, const std::vector<LossCase>& losses,
                      const std::vector<FrameRange>& shown) {
    begin(history);
    for (const auto& [frame, stored] : history.frames) {
        const Record& record = stored->view();
        for (const NodeStamps& node : nodesOf(record)) {
            if (node.last() != 0) {
                addNode(frame, node);
            }
        }
        addFrame(frame, record);
        if (const double time = frameMicroseconds(record); time >= 0) {
            addMarks(frame, record, time);
            addCounters(record, time);
            addCosts(record, time);
        }
    }
    for (const SlowAllocation& each : findAllocations(history.frames, {0, UINT32_MAX})) {
        instant("slow allocation " + each.name + ", " + std::to_string(each.kilobytes) +
                        " KiB in " + std::to_string(each.seconds) + " s",
                timeAround(each.frame, history.frames));
    }
    addLosses(history, losses);
    addMissing(history.frames, shown);
    ++mSessions;
}

void TraceEvents::begin(const SessionHistory& history) {
    mClocks = clocksOf(history.frames, mNames.ticksPerSecond());
    mTracks.clear();
    mFirstFrameStamp = mFirstNodeStamp = UINT64_MAX;
    for (const auto& [frame, stored] : history.frames) {
        if (const uint64_t own = frameStamp(stored->view(), mClocks); own != 0) {
            mFirstFrameStamp = std::min(mFirstFrameStamp, own);
        }
        for (const NodeStamps& node : nodesOf(stored->view())) {
            if (node.first() != 0) {
                mFirstNodeStamp = std::min(mFirstNodeStamp, node.first());
            }
        }
    }
    if (mClocks.nodesShareIt) {
        mFirstFrameStamp = mFirstNodeStamp = std::min(mFirstFrameStamp, mFirstNodeStamp);
    }
    const std::string title = titleOf(history);
    nameOf("process_name", process(kNodeTracks), 0, "nodes of " + title);
    nameOf("process_name", process(kFrameTracks), 0, "frames of " + title);
    nameOf("process_name", process(kDevice), 0, "device, costs, and what happened in " + title);
}

// Milliseconds and ticks of an unknown unit, in thousandths of them.
double TraceEvents::nodeMicroseconds(uint64_t stamp) const {
    return nodeTime(mFirstNodeStamp, stamp, mClocks) * 1e3;
}

// Below 0: not known.
double TraceEvents::frameMicroseconds(const Record& record) const {
    const uint64_t stamp = frameStamp(record, mClocks);
    return stamp == 0 ? -1 : frameTime(mFirstFrameStamp, stamp, mClocks) * 1e3;
}

double TraceEvents::timeAround(uint32_t frame, const FrameMap& frames) const {
    const auto at = frames.lower_bound(frame);
    const auto known = at != frames.end() ? at : std::prev(frames.end());
    const double apart = static_cast<double>(frame) - static_cast<double>(known->first);
    return std::max(0.0,
                    frameMicroseconds(known->second->view()) + apart * mClocks.frameInterval * 1e3);
}

void TraceEvents::event(const char* phase, const std::string& name, uint32_t process,
                        uint32_t track, double time, const std::string& more) {
    mOutput.append(mHasEvents ? ",\n" : "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n");
    mHasEvents = true;
    mOutput.append(std::string("{\"ph\":\"") + phase + "\",\"name\":" + quoted(name) +
                   ",\"pid\":" + std::to_string(process) + ",\"tid\":" + std::to_string(track) +
                   ",\"ts\":" + numberText(time) + more + "}");
}

void TraceEvents::nameOf(const char* what, uint32_t process, uint32_t track,
                         const std::string& name) {
    event("M", what, process, track, 0, ",\"args\":{\"name\":" + quoted(name) + "}");
}

void TraceEvents::instant(const std::string& name, double time) {
    event("i", name, process(kDevice), 0, time, ",\"s\":\"g\"");
}

void TraceEvents::counter(const std::string& name, double time, double value) {
    if (std::isfinite(value)) {
        event("C", name, process(kDevice), 0, time,
              ",\"args\":{\"value\":" + numberText(value) + "}");
    }
}

uint32_t TraceEvents::laneOf(const NodeStamps& node) {
    const auto [place, isNew] = mTracks.emplace(node.ids, Track());
    Track& track = place->second;
    if (isNew) {
        track.number = static_cast<uint32_t>(mTracks.size());
    }
    const size_t lanes = track.lanes.count();
    const size_t lane = track.lanes.take(node.first(), node.last());
    const uint32_t number = track.number * kMostLanes + static_cast<uint32_t>(lane);
    if (lane == lanes) {
        nameOf("thread_name", process(kNodeTracks), number,
               "node " + mNames.nameOf(node.ids) +
                       (lane == 0 ? "" : ", lane " + std::to_string(lane + 1)));
        event("M", "thread_sort_index", process(kNodeTracks), number, 0,
              ",\"args\":{\"sort_index\":" + std::to_string(number) + "}");
    }
    return number;
}

void TraceEvents::addNode(uint32_t frame, const NodeStamps& node) {
    const uint32_t track = laneOf(node);
    const double from = nodeMicroseconds(node.first());
    const double to = nodeMicroseconds(node.last());
    event("X", "frame " + std::to_string(frame), process(kNodeTracks), track, from,
          ",\"dur\":" + numberText(std::max(0.0, to - from)) + ",\"args\":{\"frame\":" +
                  std::to_string(frame) + ",\"queued\":" + stampText(node.queued) +
                  ",\"started\":" + stampText(node.started) + ",\"finished\":" +
                  stampText(node.finished) + ",\"handedOn\":" + stampText(node.handedOn) + "}");
    const auto addStamp = [&](const char* name, uint64_t stamp) {
        if (stamp != 0) {
            event("i", name + (" " + std::to_string(frame)), process(kNodeTracks), track,
                  nodeMicroseconds(stamp), ",\"s\":\"t\"");
        }
    };
    addStamp("queued", node.queued);
    addStamp("started", node.started);
    addStamp("finished", node.finished);
    addStamp("handed on", node.handedOn);
}

void TraceEvents::addFrame(uint32_t frame, const Record& record) {
    const double from = frameMicroseconds(record);
    const uint64_t last = lastStampOf(record);
    if (from < 0) {
        return;
    }
    const double to = mClocks.nodesShareIt && last != 0 ? nodeMicroseconds(last) : from;
    const std::string name = "frame " + std::to_string(frame);
    const std::string id = ",\"cat\":\"frame\",\"id\":" + std::to_string(frame);
    event("b", name, process(kFrameTracks), 0, from, id);
    event("e", name, process(kFrameTracks), 0, std::max(from, to), id);
}

void TraceEvents::addMarks(uint32_t frame, const Record& record, double time) {
    const uint8_t mark = record.bytes[offsetof(Layout, videoAction)];
    if (mark != 0) {
        instant(std::string(mark == 1   ? "video starts"
                            : mark == 2 ? "video has ended"
                                        : "unknown video mark") +
                        ", frame " + std::to_string(frame),
                time);
    }
}

void TraceEvents::addCounters(const Record& record, double time) {
    for (const Item& item : kItems) {
        const Column& column = item.column;
        const bool isCounter = item.array == nullptr && record.knows(column) &&
                               std::any_of(std::begin(kCounters), std::end(kCounters),
                                           [&column](const char* name) {
                                               return std::string(name) == column.name;
                                           });
        if (!isCounter) {
            continue;
        }
        const std::string name = column.name;
        counter(name.substr(name.find('_') + 1) +
                        (column.unit[0] == '\0' ? "" : std::string(" ") + column.unit),
                time, numberAt(column, record.bytes + column.offset));
    }
}

void TraceEvents::addCosts(const Record& record, double time) {
    for (const ArrayField* array : {&kPluginCosts, &kSemantCosts}) {
        for (size_t i = 0; i < record.elements(*array); ++i) {
            const uint8_t* const element = record.bytes + array->offset + i * array->elementSize;
            counter("cost of " + nameAt(array->columns[0], element), time,
                    element[offsetof(vdr2::AlgoCostTime, cost)]);
        }
    }
}

void TraceEvents::addLosses(const SessionHistory& history, const std::vector<LossCase>& losses) {
    for (const LossCase& loss : losses) {
        instant("lost: frame " + std::to_string(loss.lost.first),
                timeAround(loss.lost.first, history.frames));
    }
}

void TraceEvents::addMissing(const FrameMap& frames, const std::vector<FrameRange>& shown) {
    std::set<uint32_t> missing;
    for (const FrameRange& range : shown) {
        auto at = frames.lower_bound(range.first);
        while (at != frames.end() && std::next(at) != frames.end() &&
               std::next(at)->first <= range.last && missing.size() < kMostMissing) {
            const uint32_t end = std::min<uint32_t>(std::next(at)->first, at->first + kMostMissing);
            for (uint32_t frame = at->first + 1; frame < end; ++frame) {
                missing.insert(frame);
            }
            ++at;
        }
    }
    for (const uint32_t frame : missing) {
        instant("missing: frame " + std::to_string(frame), timeAround(frame, frames));
    }
}

void TraceEvents::finish() {
    mOutput.append("\n]}\n");
}

}  // namespace vdrdump
