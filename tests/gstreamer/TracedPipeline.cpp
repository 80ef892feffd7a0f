#include "tests/gstreamer/TracedPipeline.h"

#include <gst/gsttracer.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr GstClockTime kLongestWait = 60 * GST_SECOND;  // on the slowest of machines

std::string root() {
    return std::getenv("VDR_ROOT");
}

std::string textOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> filesIn(const char* folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(root() + folder)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

using Ids = std::array<uint32_t, 3>;

std::map<Ids, std::string> nodeNames() {
    std::map<Ids, std::string> names;
    std::istringstream lines(textOf(root() + "/nodes.txt"));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        Ids ids{};
        std::string name;
        if (words >> ids[0] >> ids[1] >> ids[2] >> name) {
            names[ids] = name;
        }
    }
    return names;
}

template <typename Element, size_t size>
std::vector<Element> listOf(const Element (&elements)[size], uint8_t count) {
    return {elements, elements + std::min<size_t>(count, size)};
}

traced::Record recordOf(const vdr1::VDRData1Layout& layout,
                        const std::map<Ids, std::string>& names) {
    traced::Record record{layout.frameNumber, {}, {}, {}, layout.sysStatusInfo};
    for (const vdr1::NodeInfo& info : listOf(layout.nodeInfo, layout.nodeInfoCount)) {
        const auto name = names.find({info.ids[0], info.ids[1], info.ids[2]});
        record.nodes.push_back({name != names.end() ? name->second : "unknown", info});
    }
    record.costs = listOf(layout.pluginAlgoCostTime, layout.pluginAlgoCostTimeCount);
    record.messages = listOf(layout.featureMessageTypeInfo, layout.featureMessageTypeInfoCount);
    return record;
}

}  // namespace

struct TracedPipeline::Handler {
    std::function<void(int)> call;
    int number = 0;
};

TracedPipeline::TracedPipeline(const std::string& description)
      : mPipeline(gst_parse_launch(description.c_str(), nullptr)) {
    if (mPipeline == nullptr) {
        std::fprintf(stderr, "cannot make the pipeline %s\n", description.c_str());
        std::abort();
    }
}

TracedPipeline::~TracedPipeline() {
    stop();
    for (GstElement* element : mElements) {
        gst_object_unref(element);
    }
    gst_object_unref(mPipeline);
}

void TracedPipeline::setState(GstState state) {
    gst_element_set_state(mPipeline, state);
    EXPECT_NE(gst_element_get_state(mPipeline, nullptr, nullptr, kLongestWait),
              GST_STATE_CHANGE_ASYNC);
}

bool TracedPipeline::runsToItsEnd() {
    GstBus* const bus = gst_element_get_bus(mPipeline);
    gst_element_set_state(mPipeline, GST_STATE_PLAYING);
    GstMessage* const message = gst_bus_timed_pop_filtered(
            bus, kLongestWait, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    gst_object_unref(bus);
    EXPECT_NE(message, nullptr) << "neither end nor error";
    const bool isEnd = message != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS;
    if (message != nullptr) {
        gst_message_unref(message);
    }
    return isEnd;
}

bool TracedPipeline::seek(GstClockTime position) {
    return gst_element_seek_simple(mPipeline, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                                   static_cast<gint64>(position)) != FALSE;
}

void TracedPipeline::beLateBy(GstClockTime time) {
    GstClock* const clock = gst_system_clock_obtain();
    gst_pipeline_use_clock(GST_PIPELINE(mPipeline), clock);
    gst_element_set_start_time(mPipeline, GST_CLOCK_TIME_NONE);
    gst_element_set_base_time(mPipeline, gst_clock_get_time(clock) - time);
    gst_object_unref(clock);
}

GstElement* TracedPipeline::element(const char* name) {
    return mElements.emplace_back(gst_bin_get_by_name(GST_BIN(mPipeline), name));
}

void TracedPipeline::onBuffer(const char* identity, std::function<void(int)> handler) {
    GstElement* const found = element(identity);
    g_object_set(found, "signal-handoffs", TRUE, nullptr);
    Handler* const data = mHandlers.emplace_back(new Handler{std::move(handler)}).get();
    g_signal_connect(found, "handoff", G_CALLBACK(+[](GstElement*, GstBuffer*, Handler* self) {
                         self->call(self->number++);
                     }),
                     data);
}

void TracedPipeline::onEndOfStream(const char* name, std::function<void()> handler) {
    Handler* const data = mHandlers.emplace_back(new Handler{[handler](int) { handler(); }}).get();
    GstPad* const pad = gst_element_get_static_pad(element(name), "sink");
    gst_pad_add_probe(
            pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM,
            [](GstPad*, GstPadProbeInfo* info, gpointer user) {
                if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_EOS) {
                    static_cast<Handler*>(user)->call(0);
                }
                return GST_PAD_PROBE_OK;
            },
            data, nullptr);
    gst_object_unref(pad);
}

void TracedPipeline::complainOfLateness(const char* name, GstClockTime frameTime,
                                        GstClockTime late) {
    GstPad* const pad = gst_element_get_static_pad(element(name), "sink");
    gst_pad_push_event(pad, gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 1.0,
                                              static_cast<GstClockTimeDiff>(late), frameTime));
    gst_object_unref(pad);
}

void Gate::pass() {
    std::unique_lock lock(mMutex);
    mIsReached = true;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return mIsOpen; });
}

void Gate::open() {
    const std::lock_guard guard(mMutex);
    mIsOpen = true;
    mChanged.notify_all();
}

void Gate::awaitSomebody() {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [this] { return mIsReached; });
}

std::string traced::Record::path() const {
    std::string names;
    for (const Node& node : nodes) {
        names += (names.empty() ? "" : " ") + node.name;
    }
    return names;
}

std::vector<traced::Record> traced::records() {
    const std::map<Ids, std::string> names = nodeNames();
    std::vector<Record> records;
    for (const fs::path& path : filesIn("/data/vendor/camera")) {
        const std::string bytes = textOf(path);
        for (size_t at = 0; at + 4096 <= bytes.size(); at += 4096) {
            vdr1::VDRData1Layout layout;
            std::memcpy(&layout, &bytes[at], sizeof(layout));
            records.push_back(recordOf(layout, names));
        }
    }
    return records;
}

std::vector<uint32_t> traced::lostFrames() {
    std::vector<uint32_t> numbers;
    for (const fs::path& path : filesIn("/data/vendor/camera_frame_lost")) {
        const std::string name = path.stem();
        const std::string number = name.substr(name.rfind('_') + 1);
        numbers.push_back(static_cast<uint32_t>(std::strtoul(number.c_str(), nullptr, 10)));
    }
    return numbers;
}

std::string traced::log() {
    return textOf(root() + "/logcat.txt");
}

uint64_t traced::statistic(const char* name) {
    GList* const tracers = gst_tracing_get_active_tracers();
    GstStructure* statistics = nullptr;
    for (GList* item = tracers; item != nullptr; item = item->next) {
        if (g_object_class_find_property(G_OBJECT_GET_CLASS(item->data), "statistics") != nullptr) {
            g_object_get(item->data, "statistics", &statistics, nullptr);
        }
    }
    g_list_free_full(tracers, gst_object_unref);
    guint64 large = 0;
    guint small = 0;
    if (gst_structure_get_uint64(statistics, name, &large) == FALSE) {
        EXPECT_TRUE(gst_structure_get_uint(statistics, name, &small)) << name;
        large = small;
    }
    gst_structure_free(statistics);
    return large;
}

void traced::forget() {
    for (const char* folder : {"/data/vendor/camera", "/data/vendor/camera_frame_lost"}) {
        for (const fs::path& path : filesIn(folder)) {
            fs::remove(path);
        }
    }
}
