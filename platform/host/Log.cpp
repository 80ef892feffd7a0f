#include "platform/Log.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <ctime>
#include <mutex>

#include "platform/host/LogControl.h"

namespace zk::host {
namespace {

struct LogState {
    std::mutex mutex;
    std::FILE* output = stderr;
    bool capturing = false;
    std::vector<LogLine> lines;
};

// Never destroyed: the library logs from its exit handlers.
LogState& state() {
    static auto* instance = new LogState;
    return *instance;
}

void print(std::FILE* output, const LogLine& line) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const bool known = line.priority >= 2 && line.priority <= 7;
    std::fprintf(output, "%02d-%02d %02d:%02d:%02d.%03ld %5d %5ld %c %-8s: %s\n", local.tm_mon + 1,
                 local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1000000,
                 getpid(), syscall(SYS_gettid), known ? "??VDIWEF"[line.priority] : '?',
                 line.tag.c_str(), line.text.c_str());
}

}  // namespace

void setLogOutput(std::FILE* output) {
    const std::lock_guard guard(state().mutex);
    state().output = output;
}

void startLogCapture() {
    const std::lock_guard guard(state().mutex);
    state().capturing = true;
    state().lines.clear();
}

std::vector<LogLine> capturedLog() {
    const std::lock_guard guard(state().mutex);
    return state().lines;
}

void stopLogCapture() {
    const std::lock_guard guard(state().mutex);
    state().capturing = false;
    state().lines.clear();
}

}  // namespace zk::host

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char text[1024];  // the device cuts a line at about this length too
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    if (length < 0) {
        return -1;
    }
    zk::host::LogLine line{priority, tag != nullptr ? tag : "", text};
    zk::host::LogState& log = zk::host::state();
    const std::lock_guard guard(log.mutex);
    if (log.output != nullptr) {
        zk::host::print(log.output, line);
    }
    if (log.capturing) {
        log.lines.push_back(std::move(line));
    }
    return 1;
}
