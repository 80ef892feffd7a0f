#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace demo {

// Collects what did not turn out as promised; with none, the demo has succeeded. One thread.
class Findings {
public:
    // Takes down `promise`, a printf format, when it was not kept. Returns `kept`.
    bool expect(bool kept, const char* promise, ...) __attribute__((format(printf, 3, 4)));

    bool none() const { return mCount == 0; }
    size_t count() const { return mCount; }
    // The first few: one fault can break a promise at every frame.
    const std::vector<std::string>& broken() const { return mBroken; }

private:
    static constexpr size_t kMostKept = 10;

    size_t mCount = 0;
    std::vector<std::string> mBroken;
};

}  // namespace demo
