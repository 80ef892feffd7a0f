#include "tools/output/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/output/printablePath.h"

namespace vdrdump {
namespace {

constexpr size_t kBlock = size_t{256} * 1024;

}  // namespace

Output::Output(const std::string& path)
      : mName(path == "-" ? "standard output" : printablePath(path)), mBuffer(kBlock) {
    if (path == "-") {
        mFile = STDOUT_FILENO;
    } else if (UnfinishedFile::isWrittenInPlace(path)) {
        mFile = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    } else {
        mFile = mUnfinished.emplace(path).descriptor();
    }
    if (mFile < 0) {
        fail();
    }
}

Output::~Output() {
    if (!mUnfinished) {
        flush();
        if (mFile > STDERR_FILENO) {
            close(mFile);
        }
    }
}

void Output::append(std::string_view text) {
    char* to = reserve(text.size());
    std::memcpy(to, text.data(), text.size());
    commit(to + text.size());
}

void Output::makeRoom(size_t size) {
    flush();
    if (mBuffer.size() < size) {
        mBuffer.resize(size);
    }
}

bool Output::flush() {
    size_t written = 0;
    while (written < mUsed && !mHasFailed) {
        const ssize_t length = write(mFile, mBuffer.data() + written, mUsed - written);
        if (length >= 0) {
            written += static_cast<size_t>(length);
        } else if (errno != EINTR) {
            fail();
        }
    }
    mUsed = 0;
    return !mHasFailed;
}

bool Output::finish() {
    if (flush() && mUnfinished && !mUnfinished->complete()) {
        fail();
    }
    return !mHasFailed;
}

void Output::fail() {
    mHasFailed = true;
    std::fprintf(stderr, "vdrdump: %s: expected to write it: %s\n", mName.c_str(),
                 std::strerror(errno));
}

}  // namespace vdrdump
