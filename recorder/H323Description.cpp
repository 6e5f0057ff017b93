#include "H323Description.h"

#include "Text.h"

namespace recorder {
namespace {

// A media text such as "1:fcodec:g711Ulaw64k 20,rtp:10.0.0.5 49170rcodec:g711Ulaw64k 20,rtp:10.0.0.5 49172".
// Its parts follow each other without separators, so it is read prefix by prefix.
void parseMediaText(std::string_view text, std::vector<H323Media>& media) {
    std::string codec;
    while (!text.empty()) {
        if (startsWith(text, "fcodec:") || startsWith(text, "rcodec:")) {
            const size_t end = text.find(',');
            codec = text.substr(7, end == std::string_view::npos ? std::string_view::npos : end - 7);
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        } else if (startsWith(text, "rtp:")) {
            text.remove_prefix(4);
            const size_t space = text.find(' ');
            const auto ip = parseIp(text.substr(0, space));
            const long port = space == std::string_view::npos ? -1 : leadingNumber(text.substr(space + 1));
            if (ip && port >= 0 && port <= 65535)
                media.push_back({{*ip, static_cast<uint16_t>(port)}, codec});
        } else {
            text.remove_prefix(1);
        }
    }
}

}  // namespace

H323Description parseH323Description(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    H323Description description;
    for (const std::string_view line : splitLines(text)) {
        if (line.size() < 2 || line[1] != ':')
            continue;
        const std::string_view value = line.substr(2);
        switch (line[0]) {
        case 't': description.type = static_cast<int>(leadingNumber(value)); break;
        case 'r': description.callReference = trim(value); break;
        case 'c': description.callId = value; break;
        case 's': description.caller = value; break;
        case 'd': description.callee = value; break;
        case 'm':
        case 'a': parseMediaText(value, description.media); break;
        }
    }
    return description;
}

}  // namespace recorder
