#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "benchmarks/BareLock.h"
#include "benchmarks/SampleFrame.h"
#include "recorder/IVideoDataRecoder.h"
#include "records/frameData.h"

namespace zk::bench {

// What a pipeline does for a frame, by whom it may be done. One thread each.
class Work {
public:
    virtual ~Work() = default;
    virtual void take(uint32_t number) = 0;
    // The `i`th write of the frame.
    virtual void write(uint32_t number, size_t i) = 0;
    virtual void done(uint32_t number) = 0;
    virtual void report(uint32_t number) = 0;

    size_t writes() const { return mFrame.writes().size(); }

protected:
    SampleFrame mFrame;
};

// The recorder does it.
class RecordersWork final : public Work {
public:
    explicit RecordersWork(IVideoDataRecoder& recorder) : mRecorder(recorder) {}

    void take(uint32_t number) override {
        mRecorder.VDRProcessing(number);
        mFrame.setNumber(number);
    }
    void write(uint32_t number, size_t i) override {
        const SampleFrame::Write& write = mFrame.writes()[i];
        mRecorder.writeMaintain(number, write.tagId, write.data);
    }
    void done(uint32_t number) override { mRecorder.VDRDone(number); }
    void report(uint32_t number) override { mRecorder.VDRReport(number); }

private:
    IVideoDataRecoder& mRecorder;
};

// The same under one lock for everything: each look-up and each copy takes it.
class WorkUnderOneLock final : public Work {
public:
    explicit WorkUnderOneLock(BareLock& lock) : mLock(lock), mRecords(kRecords) {}

    void take(uint32_t /*number*/) override { mLock.pair(); }
    void write(uint32_t number, size_t i) override {
        const SampleFrame::Write& write = mFrame.writes()[i];
        mLock.pair();
        std::memcpy(record(number).bytes, write.data, sizeOfWrite(write.tagId));
    }
    void done(uint32_t number) override {
        for (uint32_t copy = 1; copy <= 3; ++copy) {
            mLock.lock();
            record(number + copy) = record(number);
            mLock.unlock();
        }
    }
    void report(uint32_t number) override {
        mLock.lock();
        std::memset(record(number).bytes, 0, kFrameRecordSize);
        mLock.unlock();
    }

private:
    static constexpr size_t kRecords = 256;

    frameData& record(uint32_t number) { return mRecords[number % kRecords]; }

    BareLock& mLock;
    std::vector<frameData> mRecords;
};

}  // namespace zk::bench
