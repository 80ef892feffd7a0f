#pragma once

#include <string>
#include <string_view>

// The device's log and the three shapes in which the recorder uses it. Any thread.

extern "C" {
// Writes one line to the device's log; `tag` may be null. Returns 1 or a negative error.
int __android_log_print(int priority, const char* tag, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
}

namespace zk {

enum LogPriority : int {
    kLogDebug = 3,
    kLogInfo = 4,
    kLogWarning = 5,
    kLogError = 6,
};

inline constexpr char kLogTag[] = "VDRPERF";

// "virtual void zk::A::b(int)" -> "zk::A::b": what stands before the parameters, without the
// return type and without the star of a returned pointer.
inline std::string qualifiedFunctionName(std::string_view prettyFunction) {
    std::string_view name = prettyFunction.substr(0, prettyFunction.find('('));
    if (const size_t blank = name.rfind(' '); blank != std::string_view::npos) {
        name.remove_prefix(blank + 1);
    }
    std::string result(name);
    if (const size_t star = result.find('*'); star != std::string::npos) {
        result.erase(star, 1);
    }
    return result;
}

}  // namespace zk

// "%s<%d>: " is filled with the calling function and line, so that the function's name is part of
// the text: whoever moves or splits a function that logs names the old one with the ..._AS forms.
// `format` must be a literal.
#define VDR_LOG_AS(function, priority, format, ...)                                       \
    __android_log_print((priority), ::zk::kLogTag, "%s<%d>: " format, function, __LINE__, \
                        ##__VA_ARGS__)
#define VDR_LOG(priority, format, ...) VDR_LOG_AS(__func__, priority, format, ##__VA_ARGS__)
#define VDR_LOGD(format, ...) VDR_LOG(::zk::kLogDebug, format, ##__VA_ARGS__)
#define VDR_LOGI(format, ...) VDR_LOG(::zk::kLogInfo, format, ##__VA_ARGS__)
#define VDR_LOGW(format, ...) VDR_LOG(::zk::kLogWarning, format, ##__VA_ARGS__)
#define VDR_LOGE(format, ...) VDR_LOG(::zk::kLogError, format, ##__VA_ARGS__)

// The monitoring service's own convention, at information priority: the module tag of this
// component is empty, and the line stands twice.
#define VDR_LOG_DFX_AS(function, qualifiedName, format, ...)                                \
    VDR_LOG_AS(function, ::zk::kLogInfo, "[%s] %s:%d " format, "", qualifiedName, __LINE__, \
               ##__VA_ARGS__)
#define VDR_LOG_DFX(format, ...)                                                               \
    VDR_LOG_DFX_AS(__func__, ::zk::qualifiedFunctionName(__PRETTY_FUNCTION__).c_str(), format, \
                   ##__VA_ARGS__)
