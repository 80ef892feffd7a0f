#pragma once

#include <functional>
#include <string>

#include "tools/read/ByteSource.h"

namespace vdrdump {

// A file, or standard input for "-".
class FileSource : public ByteSource {
public:
    using OnBytes = std::function<void(uint64_t size)>;

    // `onBytes` hears of every piece that was read.
    FileSource(const std::string& path, OnBytes onBytes);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    // 0, or the errno value with which opening failed; a directory does not open.
    int openError() const { return mOpenError; }

    int64_t read(uint8_t* to, size_t size) override;

private:
    const OnBytes mOnBytes;
    int mFile = -1;
    int mOpenError = 0;
};

}  // namespace vdrdump
