#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "records/frameData.h"

namespace zk::test {

// A record's line of text by the C library's formatting alone, one bounded write per field, with
// the offsets of the file format as plain numbers: what the recorder's own renderer must equal.
class ReferenceLine {
public:
    // Appends the 4096 bytes of `record` to the string in `destination` (4096 bytes too). False
    // where a write does not fit; it then leaves what fits.
    static bool render(const uint8_t* record, char* destination) {
        return ReferenceLine(record, destination).renderFields();
    }

private:
    // Zeros behind the block: there counts beyond the arrays read on, and text ends.
    ReferenceLine(const uint8_t* record, char* destination)
          : mBytes(record, record + kFrameRecordSize), mDestination(destination) {
        mBytes.resize(kFrameRecordSize + 255 * 44);
    }

    template <typename T>
    T read(size_t at) const {
        T value;
        std::memcpy(&value, &mBytes[at], sizeof(T));
        return value;
    }
    unsigned u8(size_t at) const { return mBytes[at]; }
    unsigned u16(size_t at) const { return read<uint16_t>(at); }
    unsigned long u32(size_t at) const { return read<uint32_t>(at); }
    long l32(size_t at) const { return read<uint32_t>(at); }
    unsigned long long u64(size_t at) const { return read<uint64_t>(at); }
    int i16(size_t at) const { return read<int16_t>(at); }
    double f32(size_t at) const { return static_cast<double>(read<float>(at)); }
    const char* text(size_t at) const { return reinterpret_cast<const char*>(&mBytes[at]); }

    bool step(const char* format, ...) const __attribute__((format(printf, 2, 3))) {
        const size_t length = strnlen(mDestination, kFrameRecordSize);
        if (length == kFrameRecordSize) {
            mDestination[kFrameRecordSize - 1] = '\0';
            return false;
        }
        const size_t capacity = kFrameRecordSize - length;
        va_list args;
        va_start(args, format);
        const int written = std::vsnprintf(mDestination + length, capacity, format, args);
        va_end(args);
        return written >= 0 && static_cast<size_t>(written) < capacity;
    }

    template <typename Element>
    bool elements(size_t countAt, size_t at, size_t size, Element element) const {
        bool fits = step("%u,", u8(countAt));
        for (size_t i = 0; fits && i < u8(countAt); ++i) {
            fits = element(at + i * size);
        }
        return fits;
    }

    bool stamps() const {
        bool fits = true;
        for (size_t k = 0; fits && k < 15; ++k) {
            fits = step("%llu,", u64(3534 + 8 * k));
        }
        return fits;
    }

    bool renderFields() const {
        const auto feature = [this](size_t e) {
            return step("%lu,%u,%llu,", u32(e), u8(e + 4), u64(e + 5));
        };
        const auto cost = [this](size_t e) { return step("%s,%u,", text(e), u8(e + 6)); };
        const auto node = [this](size_t e) {
            return step("%lu,%lu,%lu,%llu,%llu,%llu,%llu,", u32(e), u32(e + 4), u32(e + 8),
                        u64(e + 12), u64(e + 20), u64(e + 28), u64(e + 36));
        };
        const auto gain = [this](size_t e) { return step("%s,%f,", text(e), f32(e + 15)); };
        return step("%lu,", u32(0)) && step("%lu,%llu,", u32(4), u64(8)) && step("%u,", u8(16)) &&
               step("%u,", u8(17)) && step("%u,", u8(18)) && step("%f,", f32(19)) &&
               step("%lu,%lu,%lu,%u,%f,%f,%f,%lu,%lu,%lu,%lu,%lu,%lu,%u,%u,%u,", u32(23), u32(27),
                    u32(31), u16(35), f32(37), f32(41), f32(45), u32(49), u32(53), u32(57), u32(61),
                    u32(65), u32(69), u16(73), u8(75), u8(76)) &&
               step("%u,", u8(77)) && step("%u,", u8(78)) && elements(79, 80, 13, feature) &&
               elements(275, 276, 13, feature) && elements(471, 472, 7, cost) &&
               elements(682, 683, 7, cost) && elements(893, 894, 44, node) && stamps() &&
               step("%ld,%ld,%f,%f,%f,%f,%f,%f,%lu,%d,%lu,%lu,%lu,%lu,%lu,%d,", l32(3654),
                    l32(3658), f32(3662), f32(3666), f32(3670), f32(3674), f32(3678), f32(3682),
                    u32(3686), i16(3690), u32(3692), u32(3696), u32(3700), u32(3704), u32(3708),
                    i16(3712)) &&
               step("%f,%f,%f,%f,%f,%f,%f,%f,%f,%lu,", f32(3714), f32(3718), f32(3722), f32(3726),
                    f32(3730), f32(3734), f32(3738), f32(3742), f32(3746), u32(3750)) &&
               elements(3754, 3755, 19, gain) &&
               step("%s,%lu,%u,%u,", text(3945), u32(3985), u16(3989), u8(3991)) && step("\n");
    }

    std::vector<uint8_t> mBytes;
    char* const mDestination;
};

}  // namespace zk::test
