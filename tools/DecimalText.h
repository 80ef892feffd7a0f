#pragma once

#include <cstdint>
#include <cstring>

namespace vdrdump {

// Writes integers in decimal, eight digits at a time in the lanes of one 64-bit word: an export is
// mostly stamps of a dozen digits and more, and one division per digit pair is what it would wait
// for. Each call returns the end; `out` needs kRoom bytes, of which fewer may count.
class DecimalText {
public:
    static constexpr size_t kRoom = 28;  // 20 digits and a sign, written in whole words

    static char* append(char* out, uint64_t value) {
        if (value < 10) {
            *out = static_cast<char>('0' + value);
            return out + 1;
        }
        if (value < kWord) {
            return head(out, static_cast<uint32_t>(value));
        }
        const uint64_t upper = value / kWord;
        if (upper < kWord) {
            out = head(out, static_cast<uint32_t>(upper));
        } else {
            out = head(out, static_cast<uint32_t>(upper / kWord));
            out = word(out, static_cast<uint32_t>(upper % kWord));
        }
        return word(out, static_cast<uint32_t>(value % kWord));
    }

    static char* appendSigned(char* out, int64_t value) {
        if (value < 0) {
            *out++ = '-';
            return append(out, uint64_t{0} - static_cast<uint64_t>(value));
        }
        return append(out, static_cast<uint64_t>(value));
    }

private:
    static constexpr uint32_t kWord = 100000000;  // 10^8

    // The eight digits of a number below 10^8, the first in the lowest byte. The multiplications
    // divide by 100 and by 10, exactly for what can stand in a lane.
    static uint64_t digits(uint32_t value) {
        const uint64_t fours = (value / 10000) | (uint64_t{value % 10000} << 32);
        const uint64_t hundreds = ((fours * 10486) >> 20) & 0x0000007f0000007f;
        const uint64_t twos = hundreds | ((fours - hundreds * 100) << 16);
        const uint64_t tens = ((twos * 103) >> 10) & 0x000f000f000f000f;
        return tens | ((twos - tens * 10) << 8);
    }

    static char* word(char* out, uint32_t value) {
        const uint64_t text = digits(value) | 0x3030303030303030;
        std::memcpy(out, &text, sizeof(text));
        return out + sizeof(text);
    }

    // Without leading zeros; `value` is not 0.
    static char* head(char* out, uint32_t value) {
        const uint64_t all = digits(value);
        const int zeros = __builtin_ctzll(all) / 8;
        const uint64_t text = (all | 0x3030303030303030) >> (zeros * 8);
        std::memcpy(out, &text, sizeof(text));
        return out + (8 - zeros);
    }
};

}  // namespace vdrdump
