#include "platform/enqueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Log.h"
#include "platform/host/ThreadPoolControl.h"

namespace zk {
namespace {

constexpr size_t kWorkers = 3;

class Pool {
public:
    void enqueue(std::function<void()> task) {
        std::unique_lock lock(mMutex);
        if (mInline) {
            lock.unlock();
            task();
            return;
        }
        if (mStopped) {
            __android_log_print(kLogError, kLogTag, "enqueue on stopped OrnThreadManager");
        } else if (mWorkers.empty()) {
            startLocked();
        }
        mTasks.push_back(std::move(task));
        mTaskQueued.notify_one();
    }

    void runInline(bool isInline) {
        const std::lock_guard guard(mMutex);
        mInline = isInline;
    }

    void stop() {
        std::vector<std::thread> workers;
        {
            const std::lock_guard guard(mMutex);
            mStopped = true;
            workers.swap(mWorkers);
            mTaskQueued.notify_all();
        }
        for (std::thread& worker : workers) {
            worker.join();
        }
    }

    void restart() {
        const std::lock_guard guard(mMutex);
        mStopped = false;
        if (mWorkers.empty()) {
            startLocked();
        }
    }

    void wait() {
        std::unique_lock lock(mMutex);
        mIdle.wait(lock, [this] { return mStopped || (mTasks.empty() && mRunning == 0); });
    }

private:
    void startLocked() {
        for (size_t i = 0; i < kWorkers; ++i) {
            mWorkers.emplace_back([this] { work(); });
        }
    }

    void work() {
        std::unique_lock lock(mMutex);
        while (true) {
            mTaskQueued.wait(lock, [this] { return mStopped || !mTasks.empty(); });
            if (mStopped) {
                return;
            }
            std::function<void()> task = std::move(mTasks.front());
            mTasks.pop_front();
            ++mRunning;
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
            --mRunning;
            mIdle.notify_all();
        }
    }

    std::mutex mMutex;
    std::condition_variable mTaskQueued;
    std::condition_variable mIdle;
    std::deque<std::function<void()>> mTasks;
    std::vector<std::thread> mWorkers;
    size_t mRunning = 0;
    bool mStopped = false;
    bool mInline = false;
};

// Never destroyed: its workers run until the process ends.
Pool& pool() {
    static auto* instance = new Pool;
    return *instance;
}

}  // namespace

void platform::enqueue(std::function<void()> task) {
    pool().enqueue(std::move(task));
}

void host::runTasksInline(bool isInline) {
    pool().runInline(isInline);
}

void host::stopThreadPool() {
    pool().stop();
}

void host::restartThreadPool() {
    pool().restart();
}

void host::waitForThreadPool() {
    pool().wait();
}

}  // namespace zk
