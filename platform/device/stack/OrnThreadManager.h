#pragma once

#include <future>
#include <type_traits>

namespace zk {

class OrnThreadManager {
public:
    static OrnThreadManager* GetInstance();
    template <typename F>
    std::future<std::invoke_result_t<F>> enqueue(F&& f);
};

}  // namespace zk
