#pragma once

#include <gst/gst.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "records/VDRData1Layout.h"

// A pipeline under the tracer, from its description to its records. Stopped at the end.
class TracedPipeline {
public:
    explicit TracedPipeline(const std::string& description);
    ~TracedPipeline();
    TracedPipeline(const TracedPipeline&) = delete;
    TracedPipeline& operator=(const TracedPipeline&) = delete;

    // Returns once it is there; it is a test failure where it takes too long.
    void setState(GstState state);
    void play() { setState(GST_STATE_PLAYING); }
    // Whether the end came, and not an error.
    bool runsToItsEnd();
    void stop() { setState(GST_STATE_NULL); }
    bool seek(GstClockTime position);

    // Before it plays: every frame that is to be shown at a time is late by so much.
    void beLateBy(GstClockTime time);

    // Called for each buffer that the identity element of this name passes, on its thread, with the
    // number of the buffer from 0.
    void onBuffer(const char* identity, std::function<void(int number)> handler);
    // Called when the end of the stream comes to the element's sink pad.
    void onEndOfStream(const char* element, std::function<void()> handler);
    // Tells what comes before the element, in the stream's way, that frames are late.
    void complainOfLateness(const char* element, GstClockTime frameTime, GstClockTime late);
    GstElement* element(const char* name);  // owned by this

private:
    struct Handler;

    GstElement* mPipeline;
    std::vector<GstElement*> mElements;
    std::vector<std::unique_ptr<Handler>> mHandlers;
};

// Holds threads until it is opened.
class Gate {
public:
    void pass();
    void open();
    void awaitSomebody();

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mIsOpen = false;
    bool mIsReached = false;
};

// What the tracer of this process has written. forget() deletes it.
namespace traced {

struct Node {
    std::string name;
    vdr1::NodeInfo info;

    bool isStamped(int stamp) const { return info.stamps[stamp] != 0; }
};
struct Record {
    uint32_t number;
    std::vector<Node> nodes;
    std::vector<vdr1::AlgoCostTime> costs;
    std::vector<vdr1::FeatureInfo> messages;
    vdr1::SysStatusInfo status;

    std::string path() const;  // the names of its nodes
};

std::vector<Record> records();       // of all binary dumps
std::vector<uint32_t> lostFrames();  // that there is a text of
std::string log();
uint64_t statistic(const char* name);  // of the process
void forget();

}  // namespace traced
