#include <json/reader.h>
#include <json/value.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "livephoto/LivePhoto.h"
#include "platform/host/LogControl.h"

// Posts with any request text, which comes from the application. Input: the number of queued
// records, and the text.

namespace {

constexpr uint32_t kMostRecords = 4;

// The text as it stands, but for a repeat mark and the byte behind it, which repeat what came just
// before about a thousand times: deep nesting from a short input.
std::string requestText(const uint8_t* data, size_t size) {
    constexpr size_t kLongestText = 1 << 14;
    constexpr char kRepeat = '\x1f';
    std::string text;
    for (size_t i = 0; i < size && text.size() < kLongestText; ++i) {
        if (data[i] != kRepeat || i + 1 == size) {
            text += static_cast<char>(data[i]);
            continue;
        }
        ++i;
        const std::string part =
                text.substr(text.size() - std::min<size_t>(text.size(), data[i] % 32));
        for (int times = 996 + data[i] / 32; times > 0; --times) {
            text += part;
        }
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return -1;
    }
    static std::string reply;
    static auto* livePhoto = [] {
        zk::host::setLogOutput(nullptr);
        auto* made = new zk::LivePhoto;
        made->RegisterCamDataCb([](uint32_t, std::string text) { reply = std::move(text); });
        return made;
    }();
    livePhoto->clear();
    const uint32_t count = data[0] % (kMostRecords + 1);
    for (uint32_t number = 1; number <= count; ++number) {
        livePhoto->store(number, zk::frameData{{static_cast<uint8_t>(number)}});
        livePhoto->DoneDataForLivePhoto(number);
    }
    const int fd = memfd_create("fuzz", MFD_CLOEXEC);
    if (ftruncate(fd, kMostRecords * zk::kFrameRecordSize) != 0) {
        std::abort();
    }
    reply.clear();
    livePhoto->PostDataForLivePhoto(true, fd, requestText(data + 1, size - 1));
    close(fd);
    Json::Value root;
    if (!Json::Reader().parse(reply, root) || root.size() != 2 || !root["id"].isString()) {
        std::abort();  // one proper reply, whatever the request
    }
    return 0;
}
