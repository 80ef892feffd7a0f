#pragma once

#include <memory>
#include <utility>

#include "platform/OrnEvent.h"

namespace zk {

// The process's door to the monitoring service. Any thread.
class DfxMonitorAgency {
public:
    static DfxMonitorAgency* GetInstance();

    // Null while the service is not there.
    std::shared_ptr<Orn::IEventAgency> GetEventAgency();

    // Creates an E from `args` and hands it to `client`, which must not be null. True when the
    // service took it.
    template <typename E, typename... Args>
    bool sendEvent(std::shared_ptr<Orn::IEventClient> client, Args&&... args) {
        std::shared_ptr<Orn::IEvent> event = std::make_shared<E>(std::forward<Args>(args)...);
        return client->SendEvent(std::move(event)) == 0;
    }

private:
    DfxMonitorAgency() = default;
};

}  // namespace zk
