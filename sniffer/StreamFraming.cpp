#include "StreamFraming.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

namespace {
const char sipVersion[] = "SIP/2.0";
constexpr std::size_t sipVersionLength = sizeof sipVersion - 1;
const char lineEnd[] = "\r\n";
const char headersEnd[] = "\r\n\r\n";

Framing needMore() {
    return {Framing::Kind::NeedMore, 0};
}

Framing skip(std::size_t length) {
    return {Framing::Kind::Skip, length};
}

// Offset of `pattern` in the bytes, or `length` when it is not there.
std::size_t find(const u_char* data, std::size_t length, const char* pattern) {
    const auto* begin = reinterpret_cast<const char*>(data);
    const char* end = begin + length;
    return static_cast<std::size_t>(std::search(begin, end, pattern, pattern + std::strlen(pattern)) - begin);
}

bool equalsNoCase(const char* a, const char* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool isStartLine(const u_char* line, std::size_t length) {
    const auto* text = reinterpret_cast<const char*>(line);
    if (length > sipVersionLength && equalsNoCase(text, sipVersion, sipVersionLength) && text[sipVersionLength] == ' ')
        return true;
    return length > sipVersionLength && text[length - sipVersionLength - 1] == ' ' &&
           equalsNoCase(text + length - sipVersionLength, sipVersion, sipVersionLength);
}

// The value of a "Content-Length" or "l" header line; -1 when the line is
// another header, -2 when its value is not a number.
long contentLength(const char* line, std::size_t length) {
    const char* colon = static_cast<const char*>(std::memchr(line, ':', length));
    if (!colon)
        return -1;
    std::size_t nameLength = static_cast<std::size_t>(colon - line);
    while (nameLength > 0 && (line[nameLength - 1] == ' ' || line[nameLength - 1] == '\t'))
        --nameLength;
    const bool named = (nameLength == 14 && equalsNoCase(line, "Content-Length", 14)) ||
                       (nameLength == 1 && (line[0] == 'l' || line[0] == 'L'));
    if (!named)
        return -1;
    const std::string value(colon + 1, line + length);
    const std::size_t first = value.find_first_not_of(" \t");
    const std::size_t last = value.find_last_not_of(" \t");
    if (first == std::string::npos || value.find_first_not_of("0123456789", first) <= last || last - first > 8)
        return -2;
    return std::stol(value.substr(first, last - first + 1));
}

// The body's length the headers state: 0 without the header, -1 when it is not a number.
long bodyLength(const u_char* data, std::size_t headersLength) {
    const auto* text = reinterpret_cast<const char*>(data);
    std::size_t at = find(data, headersLength, lineEnd) + 2;  // past the start line
    while (at < headersLength) {
        const std::size_t end = at + find(data + at, headersLength - at, lineEnd);
        const long value = contentLength(text + at, end - at);
        if (value != -1)
            return value < 0 ? -1 : value;
        at = end + 2;
    }
    return 0;
}
}  // namespace

Framing frameSip(const u_char* data, std::size_t length, std::size_t maxLength) {
    std::size_t blanks = 0;
    while (blanks < length && (data[blanks] == '\r' || data[blanks] == '\n'))
        ++blanks;
    if (blanks > 0)
        return skip(blanks);
    const std::size_t firstLine = find(data, length, lineEnd);
    if (firstLine == length)
        return length > maxLength ? skip(length) : needMore();
    if (!isStartLine(data, firstLine))
        return skip(firstLine + 2);
    const std::size_t headers = find(data, length, headersEnd);
    if (headers == length)
        return length > maxLength ? skip(firstLine + 2) : needMore();
    const std::size_t headersLength = headers + 4;
    const long body = bodyLength(data, headers + 2);
    if (body < 0 || headersLength + std::size_t(body) > maxLength)
        return skip(headersLength);
    const std::size_t whole = headersLength + std::size_t(body);
    return whole <= length ? Framing{Framing::Kind::Message, whole} : needMore();
}

Framing frameTpkt(const u_char* data, std::size_t length) {
    constexpr std::size_t headerLength = 4;
    if (length > 0 && data[0] != 3) {
        const auto* start = static_cast<const u_char*>(std::memchr(data, 3, length));
        return skip(start ? std::size_t(start - data) : length);
    }
    if (length < headerLength)
        return needMore();
    const std::size_t whole = std::size_t(data[2]) << 8 | data[3];
    if (whole <= headerLength)
        return skip(headerLength);
    return whole <= length ? Framing{Framing::Kind::Message, whole} : needMore();
}
