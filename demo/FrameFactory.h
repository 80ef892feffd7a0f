#pragma once

#include <cstdint>

#include "demo/AllocationScript.h"
#include "demo/SessionPlan.h"
#include "demo/StatusTrack.h"
#include "records/VDRData1.h"

namespace demo {

// Makes the record that a frame must end up with, from the frame's number and the session's plan
// alone, except for the live device status. The session takes the fields from here to write them,
// the check compares the whole. Both record levels have the same layout. One thread at a time.
class FrameFactory {
public:
    // `plan` and `track` must outlive this.
    FrameFactory(const SessionPlan& plan, const StatusTrack& track, bool steady);

    vdr1::VDRData1 record(uint32_t frame) const;

private:
    void fillHead(vdr1::VDRData1& record, uint32_t frame) const;
    void fillDeviceStatus(vdr1::VDRData1& record, uint32_t frame) const;
    static void fillFeatures(vdr1::VDRData1& record, uint32_t frame);
    static void fillAlgorithms(vdr1::VDRData1& record, uint32_t frame);
    static void fillNodes(vdr1::VDRData1& record, uint32_t frame);
    static void fillMotionStamps(vdr1::VDRData1& record, uint32_t frame);
    static void fillExposure(vdr1::VDRData1& record, uint32_t frame);
    static void fillWhiteBalance(vdr1::VDRData1& record, uint32_t frame);

    const SessionPlan& mPlan;
    const StatusTrack& mTrack;
    const AllocationScript mAllocations;
    const bool mSteady;
};

}  // namespace demo
