#pragma once

// The worker pool of the Linux stand-in. Any thread, but not from a task.
namespace zk::host {

// While set, enqueue runs the task before it returns.
void runTasksInline(bool isInline);
// Lets running tasks end and stops the workers; what is queued stays queued.
void stopThreadPool();
void restartThreadPool();
// Returns once the queue is empty and no task runs; at once where the pool is stopped.
void waitForThreadPool();

}  // namespace zk::host
