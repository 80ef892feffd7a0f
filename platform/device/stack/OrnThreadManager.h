#pragma once

#include <future>
#include <type_traits>

// In the place of the camera stack's own header: what platform/device/ takes for granted of it.
namespace zk {

class OrnThreadManager {
public:
    static OrnThreadManager* GetInstance();
    template <typename F>
    std::future<std::invoke_result_t<F>> enqueue(F&& f);
};

}  // namespace zk
