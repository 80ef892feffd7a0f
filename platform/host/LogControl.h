#pragma once

#include <cstdio>
#include <string>
#include <vector>

// Where the log goes on Linux, and what tests read of it. Any thread.
namespace zk::host {

struct LogLine {
    int priority = 0;
    std::string tag;   // empty where the caller gave none
    std::string text;  // as formatted, prefix included
};

// Lines go to `output`, logcat style; null silences them. Standard error until set.
void setLogOutput(std::FILE* output);

// From here on lines are kept too; what was kept before is dropped.
void startLogCapture();
std::vector<LogLine> capturedLog();
void stopLogCapture();

}  // namespace zk::host
