#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/OrnEvent.h"

namespace zk::host {

// The monitoring service on Linux: it delivers events to subscribed clients, one after the other,
// on a thread of its own, keeps what clients send, and can be told to misbehave. Any thread.
class MonitoringService {
public:
    static MonitoringService& instance();

    // Queues the event for every client that subscribed to its id.
    void publish(std::shared_ptr<Orn::IEvent> event);
    void announceFrameDrop(uint64_t timeStampMicroseconds, uint64_t frameNumber);
    // Returns once everything published so far has been delivered. Not from a callback.
    void waitUntilDelivered();

    // Null while withheld.
    std::shared_ptr<Orn::IEventAgency> eventAgency();

    std::vector<std::shared_ptr<Orn::IEvent>> sentEvents() const;
    std::string lastClientName() const;

    void withholdAgency(bool withhold);
    void withholdClient(bool withhold);
    // What SubscribeEvents and SendEvent return; 0 is success. A refused event is not kept.
    void setSubscribeResult(int result);
    void setSendResult(int result);
    // Behaves well again and forgets the events sent.
    void reset();

private:
    friend class EventClient;
    friend class EventAgency;
    struct State;

    MonitoringService();
    void deliver();

    std::unique_ptr<State> mState;
};

}  // namespace zk::host
