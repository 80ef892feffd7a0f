#include "tools/output/UnfinishedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace vdrdump {
namespace {

namespace fs = std::filesystem;

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXFSZ, SIGXCPU, SIGPIPE};
constexpr size_t kSlots = 4;

// What a signal removes. A name is written before it is taken for one, and only then changed when
// nobody takes it for one any more.
struct Slot {
    std::atomic<bool> isUsed{false};
    char path[4096];
};
std::array<Slot, kSlots> slots;

// Only what a signal handler may do. The signal was reset to its default and comes again.
void removeAll(int signal) {
    for (const Slot& slot : slots) {
        if (slot.isUsed) {
            unlink(slot.path);
        }
    }
    raise(signal);
}

// What is ignored stays ignored: the caller of the program said so.
void catchSignals() {
    for (const int signal : kSignals) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            action.sa_handler = removeAll;
            action.sa_flags = static_cast<int>(SA_RESETHAND);
            sigaction(signal, &action, nullptr);
        }
    }
}

// No signal ends the program while this lives.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &mBefore);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &mBefore, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t mBefore{};
};

size_t remember(const std::string& path) {
    catchSignals();
    for (size_t i = 0; i < kSlots; ++i) {
        if (!slots[i].isUsed && path.size() < sizeof(slots[i].path)) {
            std::memcpy(slots[i].path, path.c_str(), path.size() + 1);
            slots[i].isUsed = true;
            return i;
        }
    }
    return kSlots;
}

// What a link leads to, so that the link stays.
std::string targetOf(const std::string& path) {
    std::error_code error;
    const fs::path target = fs::canonical(path, error);
    return error ? path : target.string();
}

}  // namespace

bool UnfinishedFile::isWrittenInPlace(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        return true;
    }
    // /dev/stdout and its like lead to files, too, but stand for what is open already.
    const fs::path parent = fs::path(path).parent_path();
    const std::string folder = fs::canonical(parent.empty() ? "." : parent, error).string();
    return !error && (folder == "/dev" || folder.rfind("/proc/", 0) == 0);
}

UnfinishedFile::UnfinishedFile(const std::string& path) : mTarget(targetOf(path)) {
    const SignalsHeld held;  // there is no moment at which the file is there and not remembered
    const std::string stem = mTarget + "." + std::to_string(getpid());
    for (int i = 0; mFile < 0 && (i == 0 || errno == EEXIST); ++i) {
        mPath = stem + (i == 0 ? "" : "-" + std::to_string(i)) + ".unfinished";
        mFile = open(mPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    }
    if (mFile >= 0) {
        mSlot = remember(mPath);  // not before it is ours: a signal removes nobody else's
    }
    // What is replaced keeps its mode.
    struct stat old {};
    if (mFile >= 0 && stat(mTarget.c_str(), &old) == 0) {
        fchmod(mFile, old.st_mode & 07777U);
    }
}

UnfinishedFile::~UnfinishedFile() {
    if (mFile < 0) {
        return;
    }
    close(mFile);
    if (!mIsComplete) {
        unlink(mPath.c_str());
    }
    if (mSlot < kSlots) {
        slots[mSlot].isUsed = false;
    }
}

bool UnfinishedFile::complete() {
    mIsComplete = std::rename(mPath.c_str(), mTarget.c_str()) == 0;
    return mIsComplete;
}

}  // namespace vdrdump
