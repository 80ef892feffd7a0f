#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace ZkCamera {
struct CameraMemoryItemInfo;
}

namespace zk {

struct MemoryAllocTimeoutInfo;
struct SysStatusCollection;

// The camera pipeline's view of the recorder. Operations may be called from any thread; none of
// them throws. The order of the operations is a binary interface: callers go through the virtual
// table by position.
//
// Per camera session: initialize; per frame VDRProcessing, any number of writes, VDRDone and later
// VDRReport; unInitialize. For a dump that tells something:
// - Complete lost frames too: a frame that is taken and never done keeps its record until the
//   session ends, and with 80 of them nothing is recorded any more.
// - Announce a loss before 30 further frames are done, and a burst of losses once.
// - Call VDRDone from one thread where the order of frames matters: dumps have its order.
// - Ask getVDRStatus before writing: a recorder that was never opened logs a line per write.
// - The writes to a frame must have returned before its VDRDone, and the whole of a session's
//   calls before its unInitialize, or the bytes of those fields are undefined.
//
// A failure is logged and costs what hung on it: a file that cannot be written, a thread, a buffer
// or a block of records that cannot be had. It ends the process where the recorder cannot go on:
// where a small allocation is refused (a container's element, a string, a task: the code knows no
// exceptions), where an event of the monitoring service is owned by no shared reference, or where
// somebody else has already kept the promise of a loss.
class IVideoDataRecoder {
protected:
    // First, since it takes the first two places of the virtual table. Protected, since the one
    // instance belongs to the library.
    virtual ~IVideoDataRecoder() = default;

public:
    // Opens the recorder for a camera session, unless the system properties, `videoDebugSupport`
    // 0 or an unknown record level keep it closed. A `sceneMode` of -1 is no preview.
    virtual void initialize(uint8_t videoDebugSupport, int32_t sceneMode) = 0;
    // Writes out what is pending and resets the session's data; the recorder stays open.
    virtual void unInitialize() = 0;

    // Copies one field, tagged as in records/FieldTags.h, into the frame's record. `data` points to
    // the field's size in bytes (one element's for arrays, which append). Frames without a record
    // are ignored.
    virtual void writeMaintain(uint32_t frameNumber, uint32_t tagId, const void* data) = 0;
    // The same for `count` pairs of tag and data.
    virtual void writeMaintains(uint32_t frameNumber, const uint32_t* tagIds,
                                const void* const* datas, uint32_t count) = 0;
    // Takes a free record for the frame; without one the frame is silently not recorded.
    virtual void VDRProcessing(uint32_t frameNumber) = 0;
    // The frame's record is complete.
    virtual void VDRDone(uint32_t frameNumber) = 0;
    // Number of complete records; the frame number is ignored.
    virtual void VDRDoneCount(uint32_t frameNumber, uint32_t* count) = 0;
    // Consumes the oldest complete record; the frame number is ignored.
    virtual void VDRReport(uint32_t frameNumber) = 0;
    // The oldest complete record (4096 bytes, valid until the next VDRReport) or null; the frame
    // number is ignored.
    virtual void getVDRInfo(uint32_t frameNumber, void** data) = 0;
    // Whether the oldest complete record belongs to a video recording.
    virtual void getMP4Writable(bool* writable) = 0;
    // A video recording starts at this frame; false when one is running already. Both marks are
    // written to the frame's record too (tag 8), if it has one that is not done yet.
    virtual void markWritable(uint32_t frameNumber, bool& writable) = 0;
    // The video recording ends before this frame.
    virtual void markUnWritable(uint32_t frameNumber) = 0;
    // Whether the recorder is open.
    virtual void getVDRStatus(bool* status) = 0;
    // Whether this frame is to be recorded.
    virtual void checkPreviewAndVideoStatus(uint32_t frameNumber, bool* isPreviewOpen) = 0;

    // Live photos. Cache: keep a copy of a record that is still being filled; Write: add a field
    // to the copy; Done: queue the copy; Post: copy the queued frames that the JSON `request`
    // names into the shared buffer behind `fd` (borrowed) and answer through the callback.
    virtual void WriteMaintainForLivePhoto(uint32_t frameNumber, uint32_t tagId,
                                           const void* data) = 0;
    virtual void CacheDataForLivePhoto(uint32_t frameNumber) = 0;
    virtual void DoneDataForLivePhoto(uint32_t frameNumber) = 0;
    virtual void PostDataForLivePhoto(int32_t fd, std::string request) = 0;
    // Receives (80, JSON reply) on the posting thread; replaces the one before.
    virtual void RegisterCamDataCb(std::function<void(uint32_t, std::string)> callback) = 0;

    // Parks a fence's frame number and tag, and takes them back once; the first Set wins, and the
    // outputs stay untouched where nothing was parked.
    virtual void SetChiFenceMap(void* hFence, unsigned long chiFrameNum, uint8_t tagId) = 0;
    virtual void GetChiFenceMap(void* hFence, unsigned long& chiFrameNum, uint8_t& tagId) = 0;
    // Copies the snapshot of the device's state, at most about a second old while open.
    virtual void GetSystemStatus(SysStatusCollection& out) = 0;
    // As for fences, between two frame numbers.
    virtual void SetChiFrameMap(uint32_t chiFrameNum, uint32_t frameNum) = 0;
    virtual void GetChiFrameMap(uint32_t chiFrameNum, uint32_t& frameNum) = 0;
    // Keeps allocations that took more than five seconds, while open.
    virtual void SetMemAllocTimeOutInfo(ZkCamera::CameraMemoryItemInfo info) = 0;
    // Takes the oldest kept one; `out` stays untouched where there is none.
    virtual void GetMemAllocTimeOutInfo(MemoryAllocTimeoutInfo& out) = 0;
    virtual void SnapshotCountAddOne() = 0;
};

// The process's recorder, constructed when the library is loaded. Never null.
IVideoDataRecoder* getVideoDataRecoderInstance();

}  // namespace zk
