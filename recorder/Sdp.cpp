#include "Sdp.h"

#include "Text.h"

#include <optional>
#include <sstream>

namespace recorder {
namespace {

// "IN IP4 10.0.0.1" or "IN IP4 224.2.1.1/127"
std::optional<uint32_t> parseConnection(std::string_view value) {
    static constexpr std::string_view ip4 = "IN IP4 ";
    if (!startsWith(value, ip4))
        return std::nullopt;
    const std::string_view address = trim(value.substr(ip4.size()));
    return parseIp(address.substr(0, address.find('/')));
}

struct MediaSection {
    bool audio = false;
    long port = 0;
    long rtcpPort = 0;                       // from a=rtcp:, 0 when absent
    std::optional<uint32_t> rtcpConnection;  // its address, when it names one
    std::optional<uint32_t> connection;
    std::vector<Codec> codecs;
};

// "audio 49170 RTP/AVP 0 8 101"
MediaSection parseMediaLine(std::string_view value) {
    MediaSection media;
    std::istringstream fields{std::string(value)};
    std::string kind, port, transport, format;
    fields >> kind >> port >> transport;
    media.audio = kind == "audio";
    media.port = leadingNumber(port);
    while (fields >> format) {
        const long payloadType = leadingNumber(format);
        if (payloadType >= 0 && payloadType <= 127)
            media.codecs.push_back({static_cast<int>(payloadType), staticPayloadName(static_cast<int>(payloadType))});
    }
    return media;
}

// "rtpmap:8 PCMA/8000" names a payload type of the current media.
void applyRtpmap(std::string_view value, MediaSection& media) {
    const long payloadType = leadingNumber(value);
    const size_t space = value.find(' ');
    if (payloadType < 0 || space == std::string_view::npos)
        return;
    for (Codec& codec : media.codecs)
        if (codec.payloadType == payloadType)
            codec.name = trim(value.substr(space + 1));
}

// "rtcp:53020" or "rtcp:53020 IN IP4 126.16.64.4" (RFC 3605)
void applyRtcp(std::string_view value, MediaSection& media) {
    media.rtcpPort = leadingNumber(value);
    const size_t space = value.find(' ');
    if (space != std::string_view::npos)
        media.rtcpConnection = parseConnection(trim(value.substr(space + 1)));
}

}  // namespace

const Codec* telephoneEvent(const std::vector<Codec>& codecs) {
    for (const Codec& codec : codecs)
        if (startsWithNoCase(codec.name, "telephone-event/"))
            return &codec;
    return nullptr;
}

int clockRate(std::string_view codecName) {
    if (startsWithNoCase(codecName, "opus/"))
        return 48000;
    if (startsWithNoCase(codecName, "G722/"))
        return 8000;
    const size_t slash = codecName.find('/');
    const long rate = slash == std::string_view::npos ? -1 : leadingNumber(codecName.substr(slash + 1));
    return rate > 0 && rate <= 384000 ? static_cast<int>(rate) : 8000;
}

std::string staticPayloadName(int payloadType) {
    switch (payloadType) {
    case 0: return "PCMU/8000";
    case 3: return "GSM/8000";
    case 4: return "G723/8000";
    case 5: return "DVI4/8000";
    case 6: return "DVI4/16000";
    case 8: return "PCMA/8000";
    case 9: return "G722/8000";
    case 13: return "CN/8000";
    case 18: return "G729/8000";
    default: return "";
    }
}

std::vector<SdpMedia> parseSdpAudio(std::string_view sdp) {
    std::optional<uint32_t> sessionConnection;
    std::vector<MediaSection> sections;
    for (const std::string_view line : splitLines(sdp)) {
        if (line.size() < 2 || line[1] != '=')
            continue;
        const std::string_view value = line.substr(2);
        switch (line[0]) {
        case 'm': sections.push_back(parseMediaLine(value)); break;
        case 'c': (sections.empty() ? sessionConnection : sections.back().connection) = parseConnection(value); break;
        case 'a':
            if (!sections.empty() && startsWith(value, "rtpmap:"))
                applyRtpmap(value.substr(7), sections.back());
            else if (!sections.empty() && startsWith(value, "rtcp:"))
                applyRtcp(value.substr(5), sections.back());
            break;
        }
    }

    std::vector<SdpMedia> audio;
    for (MediaSection& section : sections) {
        const std::optional<uint32_t> ip = section.connection ? section.connection : sessionConnection;
        if (!section.audio || section.port <= 0 || section.port > 65535 || !ip || *ip == 0)
            continue;
        const long rtcpPort = section.rtcpPort > 0 && section.rtcpPort <= 65535 ? section.rtcpPort
                              : section.port < 65535                            ? section.port + 1
                                                                                : 0;
        const uint32_t rtcpIp = section.rtcpConnection && *section.rtcpConnection != 0 ? *section.rtcpConnection : *ip;
        audio.push_back({{*ip, static_cast<uint16_t>(section.port)},
                         std::move(section.codecs),
                         {rtcpIp, static_cast<uint16_t>(rtcpPort)}});
    }
    return audio;
}

}  // namespace recorder
