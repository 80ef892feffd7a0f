#include "platform/SyncManager.h"

#include <atomic>
#include <map>
#include <mutex>

#include "platform/host/SyncControl.h"

namespace zk {
namespace {

class HostSyncManager final : public SyncManager {
public:
    std::shared_future<VdrSyncCode> getFuture(uint64_t timeStamp) override {
        const std::lock_guard guard(mMutex);
        return mEntries[timeStamp].future;
    }

    void forget(uint64_t timeStamp) override {
        const std::lock_guard guard(mMutex);
        mEntries.erase(timeStamp);
    }

    std::pair<bool, std::shared_ptr<Promise>> getPromise(uint64_t timeStamp) override {
        const std::lock_guard guard(mMutex);
        if (mWithheld) {
            return {true, nullptr};
        }
        Entry& entry = mEntries[timeStamp];
        const bool created = !entry.handedOut;
        entry.handedOut = true;
        return {created, entry.promise};
    }

    void withhold(bool withhold) {
        const std::lock_guard guard(mMutex);
        mWithheld = withhold;
    }

    void clear() {
        const std::lock_guard guard(mMutex);
        mEntries.clear();
        mWithheld = false;
    }

private:
    struct Entry {
        std::shared_ptr<Promise> promise = std::make_shared<Promise>();
        std::shared_future<VdrSyncCode> future = promise->get_future().share();
        bool handedOut = false;
    };

    std::mutex mMutex;
    std::map<uint64_t, Entry> mEntries;
    bool mWithheld = false;
};

// Never destroyed: announcements may come while the process ends.
HostSyncManager& instance() {
    static auto* manager = new HostSyncManager;
    return *manager;
}

}  // namespace

SyncManager* SyncManager::getInstance() {
    return &instance();
}

void host::withholdPromises(bool withhold) {
    instance().withhold(withhold);
}

void host::forgetPromises() {
    instance().clear();
}

}  // namespace zk
