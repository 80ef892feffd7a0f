#pragma once

#include <string>
#include <vector>

namespace vdrdump::test {

// One run of the program as a user would make it.
struct Program {
    int status = -1;  // how it exited; 128 and more: by a signal
    std::string out;
    std::string err;
};

// `input` is what it finds on standard input, `path` the PATH in which it looks for others.
Program run(const std::vector<std::string>& arguments, const std::string& input = "",
            const std::string& path = "");

}  // namespace vdrdump::test
