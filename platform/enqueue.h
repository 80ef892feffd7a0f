#pragma once

#include <functional>

namespace zk::platform {

// Queues the task on the camera stack's worker pool (zk::OrnThreadManager) and returns at once. A
// stopped pool says so in the log and queues the task all the same. Any thread.
void enqueue(std::function<void()> task);

}  // namespace zk::platform
