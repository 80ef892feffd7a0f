#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/output/UnfinishedFile.h"

namespace vdrdump {

// Where data goes: a file, which appears complete or not at all, or standard output for "-".
// Collects into one block and writes that whole. The first failure is said on standard error; what
// follows is dropped.
class Output {
public:
    explicit Output(const std::string& path);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Room for `size` characters; commit() says where those that were written end.
    char* reserve(size_t size) {
        if (mBuffer.size() - mUsed < size) {
            makeRoom(size);
        }
        return mBuffer.data() + mUsed;
    }
    void commit(const char* end) { mUsed = static_cast<size_t>(end - mBuffer.data()); }
    void append(std::string_view text);

    // Writes what is collected. False when anything has failed so far.
    bool flush();
    // Puts a file in its place. False when anything has failed: then what was there stays.
    bool finish();
    bool hasFailed() const { return mHasFailed; }

private:
    void makeRoom(size_t size);
    void fail();

    const std::string mName;
    std::optional<UnfinishedFile> mUnfinished;
    int mFile;
    std::vector<char> mBuffer;
    size_t mUsed = 0;
    bool mHasFailed = false;
};

}  // namespace vdrdump
