#include "platform/host/MonitoringService.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/DfxMonitorAgency.h"
#include "platform/host/FrameDropNotification.h"

namespace zk::host {

class EventClient;

struct MonitoringService::State {
    std::atomic<bool> agencyWithheld{false};
    std::atomic<bool> clientWithheld{false};
    std::atomic<int> subscribeResult{0};
    std::atomic<int> sendResult{0};

    // Held while callbacks run, so that a client's destructor waits for its last delivery.
    std::mutex clientsMutex;
    std::vector<EventClient*> clients;

    mutable std::mutex sentMutex;
    std::vector<std::shared_ptr<Orn::IEvent>> sent;
    std::string lastClientName;

    std::mutex queueMutex;
    std::condition_variable queued;
    std::condition_variable delivered;
    std::deque<std::shared_ptr<Orn::IEvent>> queue;
    uint64_t publishedCount = 0;
    uint64_t deliveredCount = 0;
};

class EventClient : public Orn::IEventClient {
public:
    EventClient(MonitoringService::State& service, std::string name)
          : mService(service), mName(std::move(name)) {
        const std::lock_guard guard(mService.clientsMutex);
        mService.clients.push_back(this);
    }

    ~EventClient() override {
        const std::lock_guard guard(mService.clientsMutex);
        auto& clients = mService.clients;
        clients.erase(std::remove(clients.begin(), clients.end(), this), clients.end());
    }

    int SubscribeEvents(const std::vector<uint32_t>& eventIds) override {
        if (const int result = mService.subscribeResult; result != 0) {
            return result;
        }
        const std::lock_guard guard(mService.clientsMutex);
        mEventIds.insert(mEventIds.end(), eventIds.begin(), eventIds.end());
        return 0;
    }

    int UnsubscribeEvents(const std::vector<uint32_t>& eventIds) override {
        const std::lock_guard guard(mService.clientsMutex);
        for (const uint32_t id : eventIds) {
            mEventIds.erase(std::remove(mEventIds.begin(), mEventIds.end(), id), mEventIds.end());
        }
        return 0;
    }

    std::string GetClientName() const override { return mName; }

    void SetEventCallback(Orn::EventCallback callback) override {
        const std::lock_guard guard(mService.clientsMutex);
        mCallback = std::move(callback);
    }

    int SendEvent(std::shared_ptr<Orn::IEvent> event) override {
        if (const int result = mService.sendResult; result != 0) {
            return result;
        }
        const std::lock_guard guard(mService.sentMutex);
        mService.sent.push_back(std::move(event));
        return 0;
    }

    // Caller holds the clients' mutex.
    void deliverLocked(const std::shared_ptr<Orn::IEvent>& event) {
        const uint32_t id = event->GetEventId();
        if (mCallback && std::count(mEventIds.begin(), mEventIds.end(), id) > 0) {
            mCallback(event);
        }
    }

private:
    MonitoringService::State& mService;
    const std::string mName;
    std::vector<uint32_t> mEventIds;
    Orn::EventCallback mCallback;
};

class EventAgency : public Orn::IEventAgency {
public:
    explicit EventAgency(MonitoringService::State& service) : mService(service) {}

    std::shared_ptr<Orn::IEventClient> CreateEventClient(const std::string& name) override {
        {
            const std::lock_guard guard(mService.sentMutex);
            mService.lastClientName = name;
        }
        if (mService.clientWithheld) {
            return nullptr;
        }
        return std::make_shared<EventClient>(mService, name);
    }

private:
    MonitoringService::State& mService;
};

MonitoringService& MonitoringService::instance() {
    // Never destroyed: its thread delivers until the process ends.
    static auto* service = new MonitoringService;
    return *service;
}

MonitoringService::MonitoringService() : mState(std::make_unique<State>()) {
    std::thread([this] { deliver(); }).detach();
}

void MonitoringService::deliver() {
    std::unique_lock lock(mState->queueMutex);
    while (true) {
        mState->queued.wait(lock, [this] { return !mState->queue.empty(); });
        std::shared_ptr<Orn::IEvent> event = std::move(mState->queue.front());
        mState->queue.pop_front();
        lock.unlock();
        {
            const std::lock_guard guard(mState->clientsMutex);
            for (EventClient* client : mState->clients) {
                client->deliverLocked(event);
            }
        }
        event.reset();
        lock.lock();
        ++mState->deliveredCount;
        mState->delivered.notify_all();
    }
}

void MonitoringService::publish(std::shared_ptr<Orn::IEvent> event) {
    const std::lock_guard guard(mState->queueMutex);
    mState->queue.push_back(std::move(event));
    ++mState->publishedCount;
    mState->queued.notify_one();
}

void MonitoringService::announceFrameDrop(uint64_t timeStampMicroseconds, uint64_t frameNumber) {
    publish(std::make_shared<ZkCamera::FrameDropNotification>(timeStampMicroseconds, frameNumber));
}

void MonitoringService::waitUntilDelivered() {
    std::unique_lock lock(mState->queueMutex);
    const uint64_t target = mState->publishedCount;
    mState->delivered.wait(lock, [this, target] { return mState->deliveredCount >= target; });
}

std::vector<std::shared_ptr<Orn::IEvent>> MonitoringService::sentEvents() const {
    const std::lock_guard guard(mState->sentMutex);
    return mState->sent;
}

std::shared_ptr<Orn::IEventAgency> MonitoringService::eventAgency() {
    return mState->agencyWithheld ? nullptr : std::make_shared<EventAgency>(*mState);
}

std::string MonitoringService::lastClientName() const {
    const std::lock_guard guard(mState->sentMutex);
    return mState->lastClientName;
}

void MonitoringService::withholdAgency(bool withhold) {
    mState->agencyWithheld = withhold;
}

void MonitoringService::withholdClient(bool withhold) {
    mState->clientWithheld = withhold;
}

void MonitoringService::setSubscribeResult(int result) {
    mState->subscribeResult = result;
}

void MonitoringService::setSendResult(int result) {
    mState->sendResult = result;
}

void MonitoringService::reset() {
    withholdAgency(false);
    withholdClient(false);
    setSubscribeResult(0);
    setSendResult(0);
    const std::lock_guard guard(mState->sentMutex);
    mState->sent.clear();
    mState->lastClientName.clear();
}

}  // namespace zk::host

namespace zk {

DfxMonitorAgency* DfxMonitorAgency::GetInstance() {
    static auto* agency = new DfxMonitorAgency;
    return agency;
}

std::shared_ptr<Orn::IEventAgency> DfxMonitorAgency::GetEventAgency() {
    return host::MonitoringService::instance().eventAgency();
}

}  // namespace zk
