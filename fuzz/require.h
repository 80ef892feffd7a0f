#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zk::fuzz {

// Ends the process, and with it the fuzzer's run, with a reason.
[[noreturn]] inline void fail(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::abort();
}

inline void require(bool holds, const char* what) {
    if (!holds) {
        fail(what);
    }
}

}  // namespace zk::fuzz
