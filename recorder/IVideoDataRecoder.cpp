#include "recorder/IVideoDataRecoder.h"

#include "base/pinOperations.h"
#include "platform/CameraMemoryItemInfo.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"

// Camera processes that are built already call these operations: each stays where it is in the
// virtual table and keeps its arguments. Here, since the header is also compiled by others.
namespace zk {
namespace {

using Recorder = IVideoDataRecoder;
using U = uint32_t;
using Reply = std::function<void(U, std::string)>;

template <typename... Args>
using Taking = void (Recorder::*)(Args...);

}  // namespace

VDR_PIN_OPERATIONS(
        IVideoDataRecoder, 2,  // behind the destructor, which takes two places
        Taking<uint8_t, int32_t>{&Recorder::initialize}, Taking<>{&Recorder::unInitialize},
        Taking<U, U, const void*>{&Recorder::writeMaintain},
        Taking<U, const U*, const void* const*, U>{&Recorder::writeMaintains},
        Taking<U>{&Recorder::VDRProcessing}, Taking<U>{&Recorder::VDRDone},
        Taking<U, U*>{&Recorder::VDRDoneCount}, Taking<U>{&Recorder::VDRReport},
        Taking<U, void**>{&Recorder::getVDRInfo}, Taking<bool*>{&Recorder::getMP4Writable},
        Taking<U, bool&>{&Recorder::markWritable}, Taking<U>{&Recorder::markUnWritable},
        Taking<bool*>{&Recorder::getVDRStatus},
        Taking<U, bool*>{&Recorder::checkPreviewAndVideoStatus},
        Taking<U, U, const void*>{&Recorder::WriteMaintainForLivePhoto},
        Taking<U>{&Recorder::CacheDataForLivePhoto}, Taking<U>{&Recorder::DoneDataForLivePhoto},
        Taking<int32_t, std::string>{&Recorder::PostDataForLivePhoto},
        Taking<Reply>{&Recorder::RegisterCamDataCb},
        Taking<void*, unsigned long, uint8_t>{&Recorder::SetChiFenceMap},
        Taking<void*, unsigned long&, uint8_t&>{&Recorder::GetChiFenceMap},
        Taking<SysStatusCollection&>{&Recorder::GetSystemStatus},
        Taking<U, U>{&Recorder::SetChiFrameMap}, Taking<U, U&>{&Recorder::GetChiFrameMap},
        Taking<ZkCamera::CameraMemoryItemInfo>{&Recorder::SetMemAllocTimeOutInfo},
        Taking<MemoryAllocTimeoutInfo&>{&Recorder::GetMemAllocTimeOutInfo},
        Taking<>{&Recorder::SnapshotCountAddOne});

}  // namespace zk
