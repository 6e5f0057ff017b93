#pragma once

#include "Clock.h"
#include "Endpoint.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace recorder {

// Header in front of every frame the sniffer forwards. All fields big-endian; destination
// comes before source.
struct fwd_header {
    uint16_t len;  // whole frame, header included
    uint8_t protocol;
    uint32_t dst_ip;
    uint16_t dst_port;
    uint32_t src_ip;
    uint16_t src_port;
} __attribute__((packed));
static_assert(sizeof(fwd_header) == 15);

// A command to the sniffer: 7 bytes, big-endian, back to back on the stream.
struct sniffer_command {
    uint8_t request;
    uint32_t rtp_addr;
    uint16_t rtp_port;
} __attribute__((packed));
static_assert(sizeof(sniffer_command) == 7);

enum class Protocol : uint8_t { Sip = 1, Rtp = 2, HeartbeatReply = 3, H323 = 4 };

enum class CommandCode : uint8_t { AddRtp = 1, RemoveRtp = 2, Heartbeat = 3 };

using CommandBytes = std::array<uint8_t, sizeof(sniffer_command)>;

CommandBytes encodeCommand(CommandCode code, const Endpoint& rtp = {});

// Where commands go: the sniffers the recorder serves.
class CommandSink {
public:
    virtual ~CommandSink() = default;
    // True when the command went out to a sniffer.
    virtual bool send(CommandCode code, const Endpoint& rtp = {}) = 0;
};

// One forwarded frame. The payload points into the reader's buffer.
struct Frame {
    Protocol protocol{};
    Endpoint source;
    Endpoint destination;
    std::string_view payload;
    TimePoint arrival;
};

enum class FrameStatus { Complete, Incomplete, Malformed };

// Reads the frame at the start of `data`. Complete: `frame` is filled and `length` is its size.
// Malformed: `problem` says why; nothing that follows can be trusted.
FrameStatus readFrame(const uint8_t* data, size_t size, Frame& frame, size_t& length, std::string& problem);

// Cuts the sniffer's TCP byte stream back into frames.
class FrameStream {
public:
    // Adds received bytes; frames handed out earlier become invalid.
    void append(const uint8_t* data, size_t size, TimePoint arrival);

    // The next whole frame, or Incomplete, or Malformed with problem() set.
    FrameStatus next(Frame& frame);

    const std::string& problem() const { return problem_; }
    void clear();

private:
    std::vector<uint8_t> buffer_;
    size_t start_ = 0;
    TimePoint arrival_;
    std::string problem_;
};

// A UDP datagram holds exactly one frame; anything else is malformed.
FrameStatus readDatagram(const uint8_t* data, size_t size, Frame& frame, std::string& problem);

}  // namespace recorder
