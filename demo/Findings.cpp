#include "demo/Findings.h"

#include <cstdarg>
#include <cstdio>

namespace demo {

bool Findings::expect(bool kept, const char* promise, ...) {
    if (kept) {
        return true;
    }
    if (++mCount <= kMostKept) {
        char text[512];
        va_list args;
        va_start(args, promise);
        std::vsnprintf(text, sizeof(text), promise, args);
        va_end(args);
        mBroken.emplace_back(text);
    }
    return false;
}

}  // namespace demo
