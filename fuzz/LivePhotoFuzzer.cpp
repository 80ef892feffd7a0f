#include <fcntl.h>
#include <json/reader.h>
#include <json/value.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/require.h"
#include "livephoto/LivePhoto.h"
#include "platform/host/LogControl.h"

// Posts with any request text into any kind of descriptor. Input: the descriptor's kind, the number
// of queued records, and the request's text.

namespace {

using zk::fuzz::require;

constexpr uint32_t kMostRecords = 4;
constexpr size_t kLongestText = 1 << 14;
constexpr char kRepeat = '\x1f';

enum Kind {
    kFile,
    kShorter,
    kEqual,
    kLonger,
    kReadOnly,
    kAppending,
    kSealed,
    kPipe,
    kZeros,
    kClosed,
    kKinds
};

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
    const int fd = memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    require(fd >= 0 && ftruncate(fd, static_cast<off_t>(size)) == 0, "a memory object");
    return fd;
}

int openKind(Kind kind, size_t needed) {
    switch (kind) {
        case kFile: {
            static const int file = fileno(std::tmpfile());
            require(ftruncate(file, 0) == 0 && ftruncate(file, static_cast<off_t>(needed)) == 0,
                    "a file");
            return dup(file);
        }
        case kShorter:
            return memory(needed == 0 ? 0 : needed - zk::kFrameRecordSize);
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
        case kAppending: {
            const int fd = memory(needed);
            require(fcntl(fd, F_SETFL, O_APPEND) == 0, "append mode");
            return fd;
        }
        case kSealed: {
            const int fd = memory(needed + 5);
            require(fcntl(fd, F_ADD_SEALS, F_SEAL_GROW) == 0, "a seal");
            return fd;
        }
        case kPipe: {
            int ends[2];
            require(pipe(ends) == 0, "a pipe");
            close(ends[0]);
            return ends[1];
        }
        case kZeros:
            return open("/dev/zero", O_RDWR);
        default:
            return -1;
    }
}

off_t sizeOf(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 ? status.st_size : -1;
}

// What the descriptor's object holds must be the first `count` records or untouched zeros.
void checkContent(int fd, int state) {
    zk::frameData page{};
    for (uint32_t i = 0; i < kMostRecords; ++i) {
        if (pread(fd, page.bytes, sizeof(page.bytes),
                  static_cast<off_t>(i * zk::kFrameRecordSize)) != zk::kFrameRecordSize) {
            return;
        }
        const uint8_t expected = page.bytes[4];
        require(std::memcmp(page.bytes + 4, page.bytes + 5, sizeof(page.bytes) - 5) == 0,
                "whole records");
        require(expected == 0 || (state == 1 && expected == page.frameNumber()),
                "records that were asked for");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return -1;
    }
    static std::string reply;
    static auto* livePhoto = [] {
        zk::host::setLogOutput(nullptr);
        auto* made = new zk::LivePhoto;
        made->RegisterCamDataCb([](uint32_t, std::string text) { reply = std::move(text); });
        return made;
    }();
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
    const int fd = openKind(kind, count * zk::kFrameRecordSize);
    lseek(fd, 5, SEEK_SET);
    const off_t offset = lseek(fd, 0, SEEK_CUR);
    const off_t end = sizeOf(fd);
    reply.clear();
    livePhoto->PostDataForLivePhoto(true, fd, requestText(data + 2, size - 2));
    require(reply.empty() == (kind == kClosed), "one reply where there is a descriptor");
    if (kind != kClosed) {
        Json::Value root;
        require(Json::Reader().parse(reply, root) && root.size() == 2 && root["id"].isString(),
                "a proper reply");
        checkContent(kind <= kSealed ? fd : -1, root["state"].asInt());
        require(lseek(fd, 0, SEEK_CUR) == offset, "the offset where it was");
        require(sizeOf(fd) == end, "the end where it was");
        close(fd);
    }
    return 0;
}
