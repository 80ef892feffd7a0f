#include "platform/enqueue.h"

#include <OrnThreadManager.h>

#include <utility>

// To be adapted: the header's name, where the pool's header is called otherwise. Whatever its
// template makes of the task, the recorder drops what enqueue() returns.

namespace zk::platform {

void enqueue(std::function<void()> task) {
    static_cast<void>(OrnThreadManager::GetInstance()->enqueue(std::move(task)));
}

}  // namespace zk::platform
