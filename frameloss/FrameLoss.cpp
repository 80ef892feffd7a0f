#include "frameloss/FrameLoss.h"

#include <utility>

#include "frameloss/FrameLostTxtFile.h"
#include "platform/Log.h"
#include "platform/OrnEvent.h"
#include "platform/SyncManager.h"
#include "platform/enqueue.h"
#include "platform/frameDropOf.h"

// The monitoring service knows these messages under the name of the recorder that subscribed.
#define VDR_LOG_EVENT(format, ...)                                              \
    VDR_LOG_DFX_AS("ReceiveEvent", "zk::ZkaVideoDataRecoderImpl::ReceiveEvent", \
                   "VDR::ReceiveEvent, " format, ##__VA_ARGS__)

namespace zk {
namespace {

constexpr int32_t kNullEvent = -22;
constexpr uint64_t kLastIgnoredFrame = 10;  // the pipeline is still starting up to here

}  // namespace

int32_t FrameLoss::ReceiveEvent(const std::shared_ptr<Orn::IEvent>& event) {
    if (event == nullptr) {
        return kNullEvent;
    }
    if (const uint32_t id = event->GetEventId(); id != platform::kFrameDropEventId) {
        VDR_LOGW("VDR::ReceiveEvent, unknown eventId = %u", id);
        return 0;
    }
    uint64_t timeStamp = 0;
    uint64_t frameNumber = 0;
    if (platform::frameDropOf(*event, timeStamp, frameNumber)) {
        frameDropped(timeStamp, frameNumber);
    }
    return 0;
}

void FrameLoss::frameDropped(uint64_t timeStamp, uint64_t frameNumber) {
    VDR_LOG_EVENT("rec frame drop notification:%lu, %lu", timeStamp, frameNumber);
    if (frameNumber <= kLastIgnoredFrame) {
        VDR_LOG_EVENT("rec frame drop notification:%lu, %lu, mFrameNumber less than 10!", timeStamp,
                      frameNumber);
        return;
    }
    const auto [created, promise] = SyncManager::getInstance()->getPromise(timeStamp);
    if (mLimit.checkFrameLostRecordStatus(mHistory.isExceeded())) {
        if (!created) {
            VDR_LOG_EVENT("frameLost num already reach the max:%lu, %lu, but fail to set",
                          timeStamp, frameNumber);
            return;
        }
        VDR_LOG_EVENT("frameLost num already reach the max:%lu, %lu", timeStamp, frameNumber);
        if (promise != nullptr) {
            promise->set_value(VDR_SYNC_LIMITED);
        }
        return;
    }
    if (created) {
        VDR_LOG_EVENT("suc get promise:%lu, %lu", timeStamp, frameNumber);
        mHistory.announce(static_cast<uint32_t>(frameNumber), timeStamp, promise);
    } else {
        VDR_LOG_EVENT("promise already exist:%lu, %lu", timeStamp, frameNumber);
        mHistory.announceAgain(frameNumber);
    }
}

void FrameLoss::frameLostProcess(const frameData* frame) {
    if (std::optional<FrameLossHistory::Dump> dump = mHistory.frameLostProcess(frame)) {
        enqueueFile(std::move(*dump));
    }
}

void FrameLoss::frameLostProcess(FrameStock::Place frame) {
    if (std::optional<FrameLossHistory::Dump> dump = mHistory.frameLostProcess(std::move(frame))) {
        enqueueFile(std::move(*dump));
    }
}

void FrameLoss::stop() {
    if (std::optional<FrameLossHistory::Dump> dump = mHistory.stop()) {
        enqueueFile(std::move(*dump));
    }
}

void FrameLoss::enqueueFile(FrameLossHistory::Dump dump) {
    if (mWaitingFiles.fetch_add(1) >= kMostWaitingFiles) {
        --mWaitingFiles;
        const FrameLostTxtFile unwritten(dump.file.lostTimeStamp, dump.lostFrame);
        unwritten.logOpenFailure();
        mCompletions.abandonFile(dump.file, unwritten.path());
        mHistory.giveBack(std::move(dump.frames));
        return;
    }
    struct Task {
        std::shared_ptr<FrameLoss> frameLoss;
        FrameLossHistory::Dump dump;  // goes first, its frames back to where they are from
    };
    const auto task = std::make_shared<Task>(Task{shared_from_this(), std::move(dump)});
    platform::enqueue([task] {
        --task->frameLoss->mWaitingFiles;
        task->frameLoss->writeFile(task->dump);
    });
}

void FrameLoss::writeFile(FrameLossHistory::Dump& dump) {
    const FrameLostTxtFile txtFile(dump.file.lostTimeStamp, dump.lostFrame);
    if (txtFile.writeTxtForPreviewFrameLost(mVdrLevel, dump.frames, mLimit)) {
        mCompletions.finishFile(dump.file, txtFile.path());
    } else {
        mCompletions.abandonFile(dump.file, txtFile.path());
    }
    mHistory.giveBack(std::move(dump.frames));
}

}  // namespace zk
