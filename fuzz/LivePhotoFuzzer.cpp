#include <fcntl.h>
#include <json/reader.h>
#include <json/value.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "livephoto/LivePhoto.h"
#include "platform/host/LogControl.h"

// Posts with any request text into any kind of descriptor. Input: the descriptor's kind, the number
// of queued records, and the request's text.

namespace {

constexpr uint32_t kMostRecords = 4;
constexpr size_t kLongestText = 1 << 14;
constexpr char kRepeat = '\x1f';

enum Kind { kFile, kShorter, kEqual, kLonger, kReadOnly, kPipe, kZeros, kClosed, kKinds };

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

// The text as it stands, but for a repeat mark and the byte behind it, which repeat what came just
// before about a thousand times: deep nesting from a short input.
std::string requestText(const uint8_t* data, size_t size) {
    std::string text;
    for (size_t i = 0; i < size && text.size() < kLongestText; ++i) {
        if (data[i] != kRepeat || i + 1 == size) {
            text += static_cast<char>(data[i]);
            continue;
        }
        ++i;
        const size_t length = std::min<size_t>(text.size(), data[i] % 32);
        const std::string part = text.substr(text.size() - length);
        for (int times = 996 + data[i] / 32; times > 0; --times) {
            text += part;
        }
    }
    return text;
}

int memory(size_t size) {
    const int fd = memfd_create("fuzz", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, static_cast<off_t>(size)) != 0) {
        fail("no memory object");
    }
    return fd;
}

int openKind(Kind kind, size_t needed) {
    switch (kind) {
        case kFile: {
            static std::FILE* file = std::tmpfile();
            if (ftruncate(fileno(file), 0) != 0 ||
                ftruncate(fileno(file), static_cast<off_t>(needed)) != 0) {
                fail("no file");
            }
            return dup(fileno(file));
        }
        case kShorter:
            return memory(needed == 0 ? 0 : needed - 4096);
        case kEqual:
            return memory(needed);
        case kLonger:
            return memory(needed + 4097);
        case kReadOnly: {
            const int fd = memory(needed);
            const int readOnly = open(("/proc/self/fd/" + std::to_string(fd)).c_str(), O_RDONLY);
            close(fd);
            return readOnly;
        }
        case kPipe: {
            int ends[2];
            if (pipe(ends) != 0) {
                fail("no pipe");
            }
            close(ends[0]);
            return ends[1];
        }
        case kZeros:
            return open("/dev/zero", O_RDWR);
        default:
            return -1;
    }
}

// What the descriptor's object holds must be the first `count` records or untouched zeros.
void checkContent(int fd, int state) {
    zk::frameData page{};
    for (uint32_t i = 0; i < kMostRecords; ++i) {
        if (pread(fd, page.bytes, sizeof(page.bytes), i * 4096) != 4096) {
            return;
        }
        const uint8_t expected = page.bytes[4];
        if (std::memcmp(page.bytes + 4, page.bytes + 5, sizeof(page.bytes) - 5) != 0) {
            fail("a torn record");
        }
        if (expected != 0 && (state != 1 || expected != page.frameNumber())) {
            fail("a record that nobody asked for");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return -1;
    }
    static auto* livePhoto = new zk::LivePhoto;
    static std::string reply;
    static bool isReady = false;
    if (!isReady) {
        zk::host::setLogOutput(nullptr);
        livePhoto->RegisterCamDataCb([](uint32_t, std::string text) { reply = std::move(text); });
        isReady = true;
    }
    const auto kind = static_cast<Kind>(data[0] % kKinds);
    const uint32_t count = data[1] % (kMostRecords + 1);
    livePhoto->clear();
    for (uint32_t number = 1; number <= count; ++number) {
        zk::frameData record;
        std::memset(record.bytes, static_cast<int>(number), sizeof(record.bytes));
        std::memcpy(record.bytes, &number, sizeof(number));
        livePhoto->store(number, record);
        livePhoto->DoneDataForLivePhoto(number);
    }
    const int fd = openKind(kind, count * 4096);
    lseek(fd, 5, SEEK_SET);
    const off_t offset = lseek(fd, 0, SEEK_CUR);
    reply.clear();
    livePhoto->PostDataForLivePhoto(true, fd, requestText(data + 2, size - 2));
    if (reply.empty() != (kind == kClosed)) {
        fail("no reply, or one too many");
    }
    if (kind != kClosed) {
        Json::Value root;
        if (!Json::Reader().parse(reply, root) || root.size() != 2 || !root["id"].isString()) {
            fail("no proper reply");
        }
        checkContent(kind <= kReadOnly ? fd : -1, root["state"].asInt());
        if (lseek(fd, 0, SEEK_CUR) != offset) {
            fail("the offset moved");
        }
        close(fd);
    }
    return 0;
}
