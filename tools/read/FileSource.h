#pragma once

#include <functional>
#include <string>

#include "tools/read/ByteSource.h"

namespace vdrdump {

// A file, or standard input for "-". What does not open, as a directory, fails when it is read.
class FileSource : public ByteSource {
public:
    using OnBytes = std::function<void(uint64_t size)>;

    // `onBytes` hears of every piece that was read.
    FileSource(const std::string& path, OnBytes onBytes);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    int64_t read(uint8_t* to, size_t size) override;

private:
    const OnBytes mOnBytes;
    int mFile = -1;
    int mOpenError = 0;  // errno value
};

}  // namespace vdrdump
