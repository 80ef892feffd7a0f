#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace zk::test {

// The fuzzer's input, taken from the front; zeros where it has ended.
class InputBytes {
public:
    InputBytes(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    bool empty() const { return mSize == 0; }

    template <typename T>
    T take() {
        T value{};
        takeTo(&value, sizeof(value));
        return value;
    }
    uint8_t byte() { return take<uint8_t>(); }
    // Shorter than `longest` where the input ends.
    std::string text(size_t longest) {
        std::string result(std::min(longest, mSize), '\0');
        takeTo(result.data(), result.size());
        return result;
    }
    // What the input no longer gives stays as it is.
    void takeTo(void* place, size_t size) {
        const size_t taken = std::min(size, mSize);
        if (taken > 0) {
            std::memcpy(place, mData, taken);
            mData += taken;
            mSize -= taken;
        }
    }

private:
    const uint8_t* mData;
    size_t mSize;
};

}  // namespace zk::test
