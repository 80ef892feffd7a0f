#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#ifdef VDR_SANITIZED
// Plug-ins of others leak; those of ours are looked after by GStreamer's own means.
extern "C" int __lsan_is_turned_off();
int __lsan_is_turned_off() {
    return 1;
}
#endif

// The tracer is chosen by the environment, and is there once per process.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::string root = std::filesystem::temp_directory_path() / "vdr-gstreamer-XXXXXX";
    if (mkdtemp(root.data()) == nullptr) {
        std::perror(root.c_str());
        return 1;
    }
    setenv("VDR_ROOT", root.c_str(), 1);
    setenv("GST_TRACERS", "vdr(binary=true)", 1);
    setenv("GST_PLUGIN_PATH", VDR_PLUGIN_FOLDER, 1);
    setenv("GST_REGISTRY", VDR_REGISTRY, 1);
#ifdef VDR_SANITIZED
    // The program that looks for plug-ins could not load one that is built with a sanitizer.
    setenv("GST_REGISTRY_FORK", "no", 1);
#endif
    gst_init(&argc, &argv);
    const int result = RUN_ALL_TESTS();
    gst_deinit();
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
    return result;
}
