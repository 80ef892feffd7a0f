#include <atomic>
#include <cstring>
#include <thread>

#include "benchmarks/BareLock.h"
#include "benchmarks/EmptyCall.h"
#include "benchmarks/SampleFrame.h"
#include "benchmarks/rows.h"
#include "sysstatus/SysStatusCollection.h"

namespace zk::bench {
namespace {

constexpr uint32_t kBlocks = 80;   // that a recorder has
constexpr uint32_t kInFlight = 8;  // frames that a pipeline fills at a time
constexpr uint32_t kMostNodes = 60;
constexpr uint32_t kFirst = 1000;  // frame number

void take(IVideoDataRecoder& recorder, uint32_t first, uint32_t count) {
    for (uint32_t number = first; number < first + count; ++number) {
        recorder.VDRProcessing(number);
        recorder.writeMaintain(number, tag::frameNumber, &number);
    }
}

void complete(IVideoDataRecoder& recorder, uint32_t first, uint32_t count) {
    for (uint32_t number = first; number < first + count; ++number) {
        recorder.VDRDone(number);
    }
}

void report(IVideoDataRecoder& recorder, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        recorder.VDRReport(0);
    }
}

void finish(IVideoDataRecoder& recorder, uint32_t first, uint32_t count) {
    complete(recorder, first, count);
    report(recorder, count);
}

// Memory as large as the recorder's: the blocks that go round, and the three places into which a
// done frame is copied, two of them long.
class Rings {
public:
    Rings() : mBlocks(kBlocks), mFirst(1), mSecond(180), mThird(32) {}

    frameData& block(size_t i) { return mBlocks[i % mBlocks.size()]; }
    void clear(size_t i) { std::memset(block(i).bytes, 0, kFrameRecordSize); }
    void copyThrice(size_t i) {
        copy(mFirst[i % mFirst.size()], block(i));
        copy(mSecond[i % mSecond.size()], block(i));
        copy(mThird[i % mThird.size()], block(i));
        benchmark::ClobberMemory();
    }
    static void copy(frameData& to, const frameData& from) {
        std::memcpy(to.bytes, from.bytes, kFrameRecordSize);
        benchmark::ClobberMemory();
    }

private:
    std::vector<frameData> mBlocks;
    std::vector<frameData> mFirst;
    std::vector<frameData> mSecond;
    std::vector<frameData> mThird;
};

template <int kCount>
Measurement lockPairs(const char* name) {
    return {name, [](benchmark::State& state) {
                BareLock lock;
                measure(state, [&](int64_t) { lock.pairs<kCount>(); });
            }};
}

Measurement lockPair() {
    return lockPairs<1>("lock pair");
}

Measurement lockPairAndCopy(const char* name, size_t bytes) {
    return {name, [bytes](benchmark::State& state) {
                BareLock lock;
                frameData from{};
                frameData to{};
                measure(state, [&](int64_t) {
                    lock.pair();
                    std::memcpy(to.bytes, from.bytes, bytes);
                    benchmark::ClobberMemory();
                });
            }};
}

Row scalarWrite(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        const float zoom = 1.5F;
        take(recorder, kFirst, kInFlight);
        measure(state, [&](int64_t i) {
            recorder.writeMaintain(kFirst + static_cast<uint32_t>(i) % kInFlight, tag::zoomRatio,
                                   &zoom);
        });
        finish(recorder, kFirst, kInFlight);
    };
    return {{"scalar write of 4 bytes", run}, lockPair(), 0.5};
}

Row arrayAppend(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        const SampleFrame frame;
        const uint8_t none = 0;
        const auto emptyArrays = [&] {
            for (uint32_t number = kFirst; number < kFirst + kInFlight; ++number) {
                recorder.writeMaintain(number, tag::nodeInfoCount, &none);
            }
        };
        take(recorder, kFirst, kInFlight);
        measure(state, kInFlight * kMostNodes, emptyArrays, [&](int64_t i) {
            recorder.writeMaintain(kFirst + static_cast<uint32_t>(i) % kInFlight, tag::nodeInfo,
                                   frame.data(tag::nodeInfo));
        });
        finish(recorder, kFirst, kInFlight);
    };
    return {{"array append of 44 bytes", run}, lockPair(), 0.5};
}

Row writeOfAllTags(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        const SampleFrame frame;
        take(recorder, kFirst, kInFlight);
        measure(state, [&](int64_t i) {
            recorder.writeMaintains(kFirst + static_cast<uint32_t>(i) % kInFlight, frame.allTags(),
                                    frame.allDatas(), tag::kCount);
        });
        finish(recorder, kFirst, kInFlight);
    };
    size_t bytes = 0;
    for (uint32_t tagId = 0; tagId < tag::kCount; ++tagId) {
        bytes += sizeOfWrite(tagId);
    }
    return {{"writeMaintains of 39 tags", run},
            lockPairAndCopy("lock pair + a copy of the same bytes", bytes)};
}

Row taking(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        uint32_t first = kFirst;
        measure(
                state, kBlocks,
                [&] {
                    finish(recorder, first, kBlocks);
                    first += kBlocks;
                },
                [&](int64_t i) { recorder.VDRProcessing(first + static_cast<uint32_t>(i)); });
        finish(recorder, first, kBlocks);
    };
    return {{"VDRProcessing", run}, lockPair()};
}

Row completing(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        uint32_t first = kFirst;
        measure(
                state, kBlocks,
                [&] {
                    report(recorder, kBlocks);
                    first += kBlocks;
                    take(recorder, first, kBlocks);
                },
                [&](int64_t i) { recorder.VDRDone(first + static_cast<uint32_t>(i)); });
        report(recorder, kBlocks);
    };
    const auto bare = [](benchmark::State& state) {
        BareLock lock;
        Rings rings;
        size_t number = 0;
        measure(
                state, kBlocks,
                [&] {
                    for (uint32_t i = 0; i < kBlocks; ++i) {
                        rings.clear(i);
                    }
                },
                [&](int64_t) {
                    lock.pairs<3>();
                    rings.copyThrice(number++);
                });
    };
    return {{"VDRDone", run}, {"3 lock pairs + 3 copies of 4096 bytes", bare}, 1.3};
}

Row reporting(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        uint32_t first = kFirst;
        measure(
                state, kBlocks,
                [&] {
                    first += kBlocks;
                    take(recorder, first, kBlocks);
                    complete(recorder, first, kBlocks);
                },
                [&](int64_t) { recorder.VDRReport(0); });
    };
    const auto bare = [](benchmark::State& state) {
        BareLock lock;
        Rings rings;
        size_t number = 0;
        measure(state, [&](int64_t) {
            lock.pair();
            rings.clear(number++);
            benchmark::ClobberMemory();
        });
    };
    return {{"VDRReport", run}, {"lock pair + clearing 4096 bytes", bare}};
}

void playFrame(IVideoDataRecoder& recorder, SampleFrame& frame, uint32_t number) {
    recorder.VDRProcessing(number);
    frame.setNumber(number);
    for (const SampleFrame::Write& write : frame.writes()) {
        recorder.writeMaintain(number, write.tagId, write.data);
    }
    recorder.VDRDone(number);
    recorder.VDRReport(number);
}

constexpr int kLockPairsOfFrame = 67;

// The least that a frame can cost: its locks, its bytes, its copies.
void playBareFrame(BareLock& lock, Rings& rings, const frameData& fields, size_t bytes,
                   size_t number) {
    lock.pairs<kLockPairsOfFrame>();
    std::memcpy(rings.block(number).bytes, fields.bytes, bytes);
    rings.copyThrice(number);
}

Measurement frames(IVideoDataRecoder& recorder, const char* name, int threads) {
    return {name,
            [&recorder](benchmark::State& state) {
                SampleFrame frame;
                uint32_t number = kFirst + 0x1000000U * static_cast<uint32_t>(state.thread_index());
                measure(state, [&](int64_t) { playFrame(recorder, frame, ++number); });
            },
            threads};
}

Measurement framesOfOneThread(IVideoDataRecoder& recorder) {
    return frames(recorder, "frame with 64 writes", 1);
}

Row wholeFrame(IVideoDataRecoder& recorder) {
    const auto bare = [](benchmark::State& state) {
        const size_t bytes = SampleFrame().writtenBytes();
        const frameData fields{};
        BareLock lock;
        Rings rings;
        size_t number = 0;
        measure(state, [&](int64_t) { playBareFrame(lock, rings, fields, bytes, number++); });
    };
    return {framesOfOneThread(recorder), {"67 lock pairs + 3 copies + the bytes", bare}, 0.65};
}

// Two threads get 1.6 times the frames of one where each of them takes at most 1.25 times as long.
Row framesOfTwoThreads(IVideoDataRecoder& recorder) {
    return {frames(recorder, "frame: each of two threads", 2), framesOfOneThread(recorder), 1.25};
}

// What a word costs that two processors change in turn, as they do with every lock that both of
// them take and with what lies beside it.
Row lineThereAndBack() {
    const auto run = [](benchmark::State& state) {
        constexpr int kLooks = 1000;
        static std::atomic<int> turn{0};
        const int mine = state.thread_index();
        measure(state, [&](int64_t) {
            for (int i = 1; turn.load(std::memory_order_acquire) != mine; ++i) {
                if (i % kLooks == 0) {
                    std::this_thread::yield();  // both may be on one processor
                }
            }
            turn.store(1 - mine, std::memory_order_release);
        });
    };
    return {{"a word: to the other processor and back", run, 2}, lockPair()};
}

Row statusQuestion(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        bool isOpen = false;
        measure(state, [&](int64_t) { recorder.getVDRStatus(&isOpen); });
    };
    const auto bare = [](benchmark::State& state) {
        bool isOpen = false;
        EmptyCall* const call = emptyCall();
        measure(state, [&](int64_t) { call->ask(&isOpen); });
    };
    return {{"getVDRStatus", run}, {"an empty virtual call", bare}, 1.1};
}

Row fence(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        std::vector<char> fences(kInFlight);
        unsigned long chiFrame = 0;
        uint8_t tag = 0;
        measure(state, [&](int64_t i) {
            void* hFence = &fences[static_cast<size_t>(i) % kInFlight];
            recorder.SetChiFenceMap(hFence, static_cast<unsigned long>(i), 3);
            recorder.GetChiFenceMap(hFence, chiFrame, tag);
        });
    };
    return {{"fence set and get", run}, lockPairs<2>("2 lock pairs")};
}

Row systemStatus(IVideoDataRecoder& recorder) {
    const auto run = [&recorder](benchmark::State& state) {
        SysStatusCollection snapshot{};
        measure(state, [&](int64_t) { recorder.GetSystemStatus(snapshot); });
    };
    return {{"GetSystemStatus", run},
            lockPairAndCopy("lock pair + a copy of 80 bytes", sizeof(SysStatusCollection))};
}

}  // namespace

std::vector<Row> framePathRows(Device& device) {
    IVideoDataRecoder& recorder = device.recorder();
    return {scalarWrite(recorder),    arrayAppend(recorder),
            writeOfAllTags(recorder), taking(recorder),
            completing(recorder),     reporting(recorder),
            wholeFrame(recorder),     framesOfTwoThreads(recorder),
            lineThereAndBack(),       statusQuestion(recorder),
            fence(recorder),          systemStatus(recorder)};
}

}  // namespace zk::bench
