#pragma once

#include <functional>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>

namespace zk {

// The camera stack's worker pool: one queue under a mutex, several workers. Any thread.
class OrnThreadManager {
public:
    static OrnThreadManager* GetInstance();

    // Queues `f`, wakes one waiting worker and returns at once. A stopped pool says so in the log
    // and queues the task all the same.
    template <typename F>
    auto enqueue(F&& f) -> std::future<std::invoke_result_t<std::decay_t<F>&>> {
        using Result = std::invoke_result_t<std::decay_t<F>&>;
        auto task = std::make_shared<std::packaged_task<Result()>>(std::forward<F>(f));
        std::future<Result> result = task->get_future();
        enqueueTask([task] { (*task)(); });
        return result;
    }

private:
    OrnThreadManager() = default;
    void enqueueTask(std::function<void()> task);
};

}  // namespace zk
