#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/memberAt.h"
#include "base/pinOperations.h"

// Events, event clients and the event agency of the camera stack's monitoring service. The order
// of the virtual operations and of what events carry is the service's binary interface.

namespace Orn {

enum class EventPriority : int32_t {
    kDefault = 0,
};

// Which agencies an event is meant for.
struct EventProperty {
    int32_t value = 0;
    std::vector<uint32_t> agencies;
};
VDR_MEMBER_AT(EventProperty, value, 0, 4);
static_assert(offsetof(EventProperty, agencies) == 8 && sizeof(EventProperty) == 32,
              "others find EventProperty::agencies at 8, 24 bytes");

class IEvent {
public:
    virtual uint32_t GetEventId() const = 0;
    virtual bool GetSyncStatus() const = 0;
    virtual void SetSyncStatus(bool syncStatus) = 0;
    virtual EventPriority GetPriority() const = 0;
    virtual void SetPriority(EventPriority priority) = 0;
    virtual void GetAgencyScope(EventProperty& out) const = 0;
    virtual void SetAgencyScope(EventProperty& in) = 0;
    virtual ~IEvent() = default;
};
VDR_PIN_OPERATIONS(IEvent, 0, &IEvent::GetEventId, &IEvent::GetSyncStatus, &IEvent::SetSyncStatus,
                   &IEvent::GetPriority, &IEvent::SetPriority, &IEvent::GetAgencyScope,
                   &IEvent::SetAgencyScope);

// What every event carries. Create events in one shared allocation (std::make_shared): an event
// that no shared reference holds cannot hand one out, and asking it to ends the process.
class IEventBase : public IEvent, public std::enable_shared_from_this<IEventBase> {
public:
    uint32_t GetEventId() const override = 0;
    bool GetSyncStatus() const override { return mSyncStatus; }
    void SetSyncStatus(bool syncStatus) override { mSyncStatus = syncStatus; }
    EventPriority GetPriority() const override { return mPriority; }
    void SetPriority(EventPriority priority) override { mPriority = priority; }
    void GetAgencyScope(EventProperty& out) const override { copyScope(mAgencyScope, out); }
    void SetAgencyScope(EventProperty& in) override { copyScope(in, mAgencyScope); }
    ~IEventBase() override = default;

private:
    static void copyScope(const EventProperty& from, EventProperty& to) {
        to.value = from.value;
        if (&from != &to) {
            to.agencies = from.agencies;
        }
    }

    // Of both bases, the table's address and the reference to itself come first.
    static void pinMembers() {
        VDR_CLASS_MEMBER_AT(IEventBase, mSyncStatus, 24, 1);
        VDR_CLASS_MEMBER_AT(IEventBase, mPriority, 28, 4);
        VDR_CLASS_MEMBER_AT(IEventBase, mAgencyScope, 32, 32);
    }

    bool mSyncStatus = false;
    EventPriority mPriority = EventPriority::kDefault;
    EventProperty mAgencyScope;
};
static_assert(sizeof(IEventBase) == 64);

using EventCallback = std::function<int32_t(std::shared_ptr<IEvent>)>;

// One component's connection to the service. Any thread. The service calls the callback on a
// thread of its own, and never again once the last reference to the client is gone.
class IEventClient {
public:
    // 0 on success.
    virtual int SubscribeEvents(const std::vector<uint32_t>& eventIds) = 0;
    virtual int UnsubscribeEvents(const std::vector<uint32_t>& eventIds) = 0;
    virtual std::string GetClientName() const = 0;
    virtual void SetEventCallback(EventCallback callback) = 0;
    // 0 once the service has taken the event.
    virtual int SendEvent(std::shared_ptr<IEvent> event) = 0;
    virtual ~IEventClient() = default;
};
VDR_PIN_OPERATIONS(IEventClient, 0, &IEventClient::SubscribeEvents,
                   &IEventClient::UnsubscribeEvents, &IEventClient::GetClientName,
                   &IEventClient::SetEventCallback, &IEventClient::SendEvent);

class IEventAgency {
public:
    // Null when the service refuses the client.
    virtual std::shared_ptr<IEventClient> CreateEventClient(const std::string& name) = 0;
    virtual ~IEventAgency() = default;
};
VDR_PIN_OPERATIONS(IEventAgency, 0, &IEventAgency::CreateEventClient);

}  // namespace Orn
