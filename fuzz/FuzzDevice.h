#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace zk::fuzz {

// Ends the process, and with it the fuzzer's run, with a reason.
[[noreturn]] void fail(const std::string& reason);

inline void require(bool holds, const char* what) {
    if (!holds) {
        fail(what);
    }
}

// The device in a temporary folder on which sequences are played.
class FuzzDevice {
public:
    static constexpr uint64_t kNow = 1700000000000000;  // microseconds since the epoch

    FuzzDevice();
    ~FuzzDevice();
    FuzzDevice(const FuzzDevice&) = delete;
    FuzzDevice& operator=(const FuzzDevice&) = delete;

    // As new: no files, clock at kNow, every service willing, nothing remembered.
    void reset();
    void makeFolders() const;
    void removeFolders() const;

    // By name: sizes, and contents.
    std::map<std::string, uint64_t> binFiles() const;
    std::map<std::string, std::string> textFiles() const;
    // Name, and a hash per record of 4096 bytes.
    std::string binDigest() const;

private:
    std::filesystem::path mRoot;
};

}  // namespace zk::fuzz
