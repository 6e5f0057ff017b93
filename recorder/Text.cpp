#include "Text.h"

#include <cctype>

namespace recorder {

std::string_view trim(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    return text;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && equalsNoCase(text.substr(0, prefix.size()), prefix);
}

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.push_back(line);
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
    return lines;
}

long leadingNumber(std::string_view text) {
    long value = -1;
    for (const char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c)) || value > 99999999)
            break;
        value = (value < 0 ? 0 : value * 10) + (c - '0');
    }
    return value;
}

namespace {

// The length of the well-formed UTF-8 sequence at the start of `text`, 0 when there is none.
size_t utf8SequenceLength(std::string_view text) {
    const auto byte = [&text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80)
        return 1;
    // The lowest and highest second byte each lead allows (no overlongs, surrogates or > U+10FFFF).
    size_t length = 0;
    unsigned char low = 0x80, high = 0xbf;
    if (lead >= 0xc2 && lead <= 0xdf)
        length = 2;
    else if (lead >= 0xe0 && lead <= 0xef)
        length = 3, low = lead == 0xe0 ? 0xa0 : 0x80, high = lead == 0xed ? 0x9f : 0xbf;
    else if (lead >= 0xf0 && lead <= 0xf4)
        length = 4, low = lead == 0xf0 ? 0x90 : 0x80, high = lead == 0xf4 ? 0x8f : 0xbf;
    if (length == 0 || text.size() < length || byte(1) < low || byte(1) > high)
        return 0;
    for (size_t i = 2; i < length; ++i)
        if (byte(i) < 0x80 || byte(i) > 0xbf)
            return 0;
    return length;
}

}  // namespace

std::string validUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const size_t length = utf8SequenceLength(text);
        valid += length ? text.substr(0, length) : std::string_view("\xef\xbf\xbd");
        text.remove_prefix(length ? length : 1);
    }
    return valid;
}

}  // namespace recorder
