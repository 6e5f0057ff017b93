// Hex helpers shared by the toolkit's tests.

#ifndef H323_TESTS_BYTES_H
#define H323_TESTS_BYTES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace h323::test {

// "0a 0b0c" -> {0x0a, 0x0b, 0x0c}; blanks are ignored.
inline std::vector<uint8_t> bytes(std::string_view hex) {
    std::vector<uint8_t> out;
    int high = -1;
    for (char c : hex) {
        int v = c >= '0' && c <= '9'   ? c - '0'
                : c >= 'a' && c <= 'f' ? c - 'a' + 10
                : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                       : -1;
        if (v < 0)
            continue;
        if (high < 0) {
            high = v;
        } else {
            out.push_back(uint8_t(high * 16 + v));
            high = -1;
        }
    }
    return out;
}

inline std::string hex(const std::vector<uint8_t>& b) {
    static const char kHex[] = "0123456789abcdef";
    std::string out;
    for (uint8_t c : b) {
        out += kHex[c >> 4];
        out += kHex[c & 15];
    }
    return out;
}

inline std::string_view view(const std::vector<uint8_t>& b) {
    return std::string_view(reinterpret_cast<const char*>(b.data()), b.size());
}

}  // namespace h323::test

#endif
