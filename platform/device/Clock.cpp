#include "platform/Clock.h"

#include <unistd.h>

namespace zk::platform {

int getTimeOfDay(timeval* now) {
    return gettimeofday(now, nullptr);
}

void sleepMicroseconds(uint32_t microseconds) {
    usleep(microseconds);
}

}  // namespace zk::platform
