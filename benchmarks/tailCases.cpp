#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "benchmarks/Device.h"
#include "benchmarks/Tails.h"
#include "benchmarks/Work.h"
#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/ThreadPoolControl.h"

namespace zk::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kBatch = 8;  // writes that are timed together: few enough to see a nap
constexpr size_t kRoom = 1000000;

uint32_t nanosecondsSince(Clock::time_point start) {
    const auto passed = std::chrono::nanoseconds(Clock::now() - start).count();
    return static_cast<uint32_t>(std::min<int64_t>(passed, UINT32_MAX));
}

// What reading the clock twice takes.
uint32_t clockTime() {
    static const uint32_t time = [] {
        Samples samples(10000);
        for (int i = 0; i < 10000; ++i) {
            samples.add(nanosecondsSince(Clock::now()));
        }
        return samples.perMille(500);
    }();
    return time;
}

template <typename Operation>
void timed(Samples& samples, Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    const uint32_t passed = nanosecondsSince(start);
    samples.add(passed > clockTime() ? passed - clockTime() : 0);
}

// Times of the operations that the frames of one thread are made of.
struct Times {
    Samples take{kRoom};
    Samples write{kRoom};
    Samples done{kRoom};
    Samples report{kRoom};
};

void fill(Work& work, uint32_t number, size_t batch, Times& times) {
    for (size_t i = 0; i < work.writes(); i += batch) {
        timed(times.write, [&] {
            for (size_t j = i; j < i + batch; ++j) {
                work.write(number, j);
            }
        });
    }
}

// Frames as fast as they go, with numbers from `next`, until `isOver`.
void pushFrames(Work& work, std::atomic<uint32_t>& next, const std::atomic<bool>& isOver,
                Times& times) {
    while (!isOver) {
        const uint32_t number = next++;
        timed(times.take, [&] { work.take(number); });
        fill(work, number, kBatch, times);
        timed(times.done, [&] { work.done(number); });
        timed(times.report, [&] { work.report(number); });
    }
}

Tail tailOf(const std::string& name, unsigned threads, const char* operation, Samples& samples,
            size_t batch, double framesPerSecond) {
    return {name,
            threads,
            operation,
            static_cast<double>(samples.perMille(500)) / static_cast<double>(batch),
            samples.perMille(990),
            samples.perMille(999),
            samples.worst(),
            framesPerSecond};
}

using WorkMaker = std::function<std::unique_ptr<Work>()>;

// `beside`, unless empty, runs on the calling thread meanwhile, again and again, with the number
// of the next frame.
std::vector<Tail> runCase(const std::string& name, unsigned threads, double seconds,
                          const WorkMaker& makeWork, const std::function<void(uint32_t)>& beside) {
    std::vector<Times> times(threads);
    std::atomic<uint32_t> next{1000};
    std::atomic<bool> isOver{false};
    std::vector<std::thread> running;
    const Clock::time_point start = Clock::now();
    for (unsigned i = 0; i < threads; ++i) {
        running.emplace_back([&, i] { pushFrames(*makeWork(), next, isOver, times[i]); });
    }
    const auto end = start + std::chrono::duration_cast<Clock::duration>(
                                     std::chrono::duration<double>(seconds));
    while (Clock::now() < end) {
        if (beside) {
            beside(next);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    isOver = true;
    for (std::thread& thread : running) {
        thread.join();
    }
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    for (unsigned i = 1; i < threads; ++i) {
        times[0].write.addAll(times[i].write);
        times[0].done.addAll(times[i].done);
        times[0].report.addAll(times[i].report);
    }
    const double rate = (next - 1000) / passed;
    return {tailOf(name, threads, "writeMaintain", times[0].write, kBatch, rate),
            tailOf(name, threads, "VDRDone", times[0].done, 1, rate),
            tailOf(name, threads, "VDRReport", times[0].report, 1, rate)};
}

// Announces losses to come, so that a dump is nearly always being written.
void keepDumping(uint32_t nextFrame) {
    static uint64_t timeStamp = 1;
    constexpr uint32_t kAhead = 500;
    host::MonitoringService::instance().announceFrameDrop(timeStamp++, nextFrame + kAhead);
}

void append(std::vector<Tail>& tails, std::vector<Tail> more) {
    tails.insert(tails.end(), more.begin(), more.end());
}

// A pipeline at 30 frames a second, whose frames are reported on a thread of their own.
std::vector<Tail> runPaced(const std::string& name, double seconds, IVideoDataRecoder& recorder) {
    constexpr auto kFrameTime = std::chrono::microseconds(33333);
    RecordersWork work(recorder);
    Times times;
    std::atomic<uint32_t> framesDone{0};
    std::atomic<bool> isOver{false};
    std::thread reporter([&] {
        for (uint32_t reported = 0; !isOver;) {
            if (reported < framesDone) {
                recorder.VDRReport(0);
                ++reported;
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    });
    const Clock::time_point start = Clock::now();
    const auto frames = static_cast<uint32_t>(seconds * 30);
    for (uint32_t i = 0; i < frames; ++i) {
        std::this_thread::sleep_until(start + i * kFrameTime);
        timed(times.take, [&] { work.take(1000 + i); });
        fill(work, 1000 + i, 1, times);
        timed(times.done, [&] { work.done(1000 + i); });
        ++framesDone;
    }
    const double rate = frames / std::chrono::duration<double>(Clock::now() - start).count();
    isOver = true;
    reporter.join();
    return {tailOf(name, 1, "VDRProcessing", times.take, 1, rate),
            tailOf(name, 1, "writeMaintain", times.write, 1, rate),
            tailOf(name, 1, "VDRDone", times.done, 1, rate)};
}

}  // namespace

std::vector<Tail> measureTails(Device& device, double seconds) {
    std::vector<Tail> tails;
    host::runTasksInline(false);
    for (const unsigned threads : {1U, 2U, 4U}) {
        BareLock lock;
        append(tails, runCase(
                              "one lock for everything", threads, seconds,
                              [&] { return std::make_unique<WorkUnderOneLock>(lock); }, nullptr));
        for (const bool isRecording : {false, true}) {
            for (const bool isDumping : {false, true}) {
                IVideoDataRecoder& recorder =
                        isRecording ? device.recordingRecorder() : device.recorder();
                const std::string name = std::string(isRecording ? "recording" : "not recording") +
                                         (isDumping ? " and dumping" : "");
                append(tails, runCase(
                                      name, threads, seconds,
                                      [&] { return std::make_unique<RecordersWork>(recorder); },
                                      isDumping ? keepDumping : nullptr));
                recorder.unInitialize();
                host::waitForThreadPool();
                device.removeDumps();
                recorder.initialize(1, 0);
            }
        }
    }
    host::runTasksInline(true);
    return tails;
}

std::vector<Tail> measureSlowDisk(Device& device, double seconds) {
    constexpr auto kWriteTime = std::chrono::milliseconds(200);
    std::vector<Tail> tails;
    IVideoDataRecoder& recorder = device.recordingRecorder();
    for (const bool isSlow : {false, true}) {
        host::setFileCallHandler([isSlow, kWriteTime](host::FileCall call) {
            if (isSlow && call == host::FileCall::kWrite) {
                std::this_thread::sleep_for(kWriteTime);
            }
        });
        append(tails, runPaced(isSlow ? "30 frames/s and writes of 200 ms" : "30 frames/s", seconds,
                               recorder));
        host::setFileCallHandler(nullptr);
        recorder.unInitialize();
        device.removeDumps();
        recorder.initialize(1, 0);
    }
    return tails;
}

}  // namespace zk::bench
