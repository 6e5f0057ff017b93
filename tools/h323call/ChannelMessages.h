// H.245 logical-channel messages built with the toolkit's encoder, with the
// parts the sniffer's call descriptions read: codec, media addresses, ack.
#ifndef TESTS_H323PARSER_CHANNEL_MESSAGES_H
#define TESTS_H323PARSER_CHANNEL_MESSAGES_H

#include <string>

namespace channeltest {

struct MediaAddress {
    enum Kind { None, Ipv4, Ipv6, Multicast };
    Kind kind = None;
    std::string ip;  // dotted IPv4 (Ipv4, Multicast)
    unsigned port = 0;

    static MediaAddress ipv4(std::string ip, unsigned port) { return {Ipv4, std::move(ip), port}; }
};

// One direction of a channel: an AudioCapability alternative ("g711Ulaw64k",
// "g7231", "g729", ...) or "h261" / "h263" video, and its media channel.
struct Direction {
    std::string codec = "g711Ulaw64k";
    int framesPerPacket = 20;
    MediaAddress media;
};

struct Channel {
    unsigned lcn = 1;
    Direction forward;
    bool hasReverse = false;
    Direction reverse = {};
};

// A bare OpenLogicalChannel, as fast start carries it.
std::string openLogicalChannel(const Channel& channel);
// MultimediaSystemControlMessages.
std::string openLogicalChannelRequest(const Channel& channel);
std::string openLogicalChannelAck(unsigned lcn, const MediaAddress& forward, const MediaAddress& reverse);
std::string userInputAlphanumeric(const std::string& digits);
std::string masterSlaveDetermination();

}  // namespace channeltest

#endif
