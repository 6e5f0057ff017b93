#include "h323/Unicode.h"

namespace h323 {

std::string ucs2ToUtf8(std::string_view ucs2) {
    std::string out;
    out.reserve(ucs2.size());
    for (size_t i = 0; i + 1 < ucs2.size(); i += 2) {
        unsigned c = (unsigned(uint8_t(ucs2[i])) << 8) | uint8_t(ucs2[i + 1]);
        if (c < 0x80) {
            out += char(c);
        } else if (c < 0x800) {
            out += char(0xc0 | (c >> 6));
            out += char(0x80 | (c & 0x3f));
        } else {
            out += char(0xe0 | (c >> 12));
            out += char(0x80 | ((c >> 6) & 0x3f));
            out += char(0x80 | (c & 0x3f));
        }
    }
    return out;
}

namespace {
constexpr unsigned kReplacement = 0xfffd;

// Decodes one UTF-8 sequence at `i`, advancing it.
unsigned nextCodePoint(std::string_view s, size_t& i) {
    unsigned char lead = uint8_t(s[i++]);
    if (lead < 0x80)
        return lead;
    unsigned extra = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : 0;
    if (extra == 0)
        return kReplacement;
    unsigned c = lead & (0x3f >> extra);
    for (unsigned k = 0; k < extra; ++k) {
        if (i >= s.size() || (uint8_t(s[i]) & 0xc0) != 0x80)
            return kReplacement;
        c = (c << 6) | (uint8_t(s[i++]) & 0x3f);
    }
    return c > 0xffff ? kReplacement : c;
}
}  // namespace

std::string utf8ToUcs2(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size() * 2);
    for (size_t i = 0; i < utf8.size();) {
        unsigned c = nextCodePoint(utf8, i);
        out += char(c >> 8);
        out += char(c & 0xff);
    }
    return out;
}

}  // namespace h323
