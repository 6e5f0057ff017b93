#pragma once

#include "CallAudio.h"
#include "Clock.h"
#include "Dtmf.h"
#include "Endpoint.h"
#include "FileCache.h"
#include "Json.h"
#include "PcapWriter.h"
#include "Rtp.h"
#include "Sdp.h"
#include "StreamQuality.h"
#include "Wire.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace recorder {

enum class Signalling { Sip, H323 };
enum class Party { Unknown, Caller, Callee };

// A media address announced for a call, and the party that receives RTP there.
struct MediaAddress {
    Endpoint address;
    Party owner = Party::Unknown;
    std::vector<Codec> codecs;
};

// One signalling message as the call's ladder shows it.
struct SignallingMessage {
    TimePoint time;
    Endpoint source, destination;
    std::string line;  // a SIP message's first line, or an H.323 description
};

struct CallInfo {
    Signalling signalling = Signalling::Sip;
    std::string callId;         // SIP Call-ID, or the H.323 call identifier once known
    std::string callReference;  // H.323 only
    std::string caller, callee;
    std::string callerName, calleeName;  // SIP display names, as the INVITE gave them
    TimePoint start, end;
    std::string endReason;  // empty while the call goes on
};

// Everything recorded of one call: what its signalling said, its packets in call.pcap, per-stream
// counts and its audio.
class Call {
public:
    // Starts call.pcap in `folder`; the call's files are written through `files`.
    Call(CallInfo info, std::filesystem::path folder, FileCache& files);

    CallInfo& info() { return info_; }
    const CallInfo& info() const { return info_; }
    const std::filesystem::path& folder() const { return folder_; }
    TimePoint lastActivity() const { return lastActivity_; }
    bool ended() const { return !info_.endReason.empty(); }
    std::string name() const;  // for log lines
    void end(std::string reason, TimePoint when);

    const std::vector<MediaAddress>& media() const { return media_; }
    // `owner` now receives at `addresses` only; returns the addresses it gave up.
    std::vector<Endpoint> replaceMedia(Party owner, std::vector<MediaAddress> addresses);
    // Adds an address unless the call has it already.
    void addMedia(MediaAddress address);

    void recordSip(const Frame& frame);
    void recordH323(const Frame& frame);
    void recordRtp(const Frame& frame);

    // Closes call.pcap; the call records nothing more.
    void close();
    // Once closed: replays the RTP of call.pcap into `audio`, marking the streams it decoded.
    // The archive does this on its own thread, so that decoding costs the recording nothing.
    void decodeAudio(CallAudio& audio);
    Json toJson(bool wavWritten) const;
    // The signalling messages in arrival order, each sent by the caller when it comes from where
    // the first one came from; at most kMaxMessages of them.
    Json messagesJson() const;

    static constexpr size_t kMaxMessages = 1000;
    static constexpr size_t kMaxLineLength = 2000;

private:
    // What the signalling calls a stream's payload type, looked up once per type and media change
    // rather than per packet.
    struct PayloadNames {
        uint64_t mediaVersion = 0;
        int payloadType = -1;
        std::string codec;
        uint32_t clockRate = 8000;
        const Codec* events = nullptr;  // the stream's RFC 4733 codec
        uint32_t eventClockRate = 8000;
    };

    struct Stream {
        Endpoint destination, source;
        Party speaker = Party::Unknown;
        int channel = 0;
        int payloadType = -1;
        bool decoded = false;  // some of its audio is in call.wav
        PayloadNames names;    // of the last payload type seen
        uint64_t packets = 0, bytes = 0;
        StreamQuality quality;
    };

    const PayloadNames& namesOf(Stream& stream, int payloadType) const;
    Stream* streamAt(const Endpoint& destination);  // none when no packet went there yet
    Stream& streamTo(const Frame& frame);
    Party ownerOf(const Endpoint& address) const;
    std::string codecName(const Stream& stream) const;
    const Codec* telephoneEvent(const Stream& stream) const;
    void recordRtcp(const Frame& frame);
    void keepMessage(const Frame& frame, std::string_view line);
    std::string codecName(const Endpoint& destination, int payloadType) const;
    Json streamJson(const Stream& stream) const;

    CallInfo info_;
    std::filesystem::path folder_;
    TimePoint lastActivity_;
    PcapWriter pcap_;
    uint64_t signallingPackets_ = 0;
    std::vector<std::string> descriptions_;    // H.323 texts as received
    std::vector<SignallingMessage> messages_;  // the first kMaxMessages
    std::vector<MediaAddress> media_;
    uint64_t mediaVersion_ = 1;  // changes with media_, so that streams look their names up again
    std::vector<Stream> streams_;
    DtmfEvents dtmf_;
};

const char* partyName(Party party);

}  // namespace recorder
