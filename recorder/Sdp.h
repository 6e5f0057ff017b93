#pragma once

#include "Endpoint.h"

#include <string>
#include <string_view>
#include <vector>

namespace recorder {

struct Codec {
    int payloadType = -1;  // -1 where the signalling names a codec without one
    std::string name;      // "PCMA/8000", "g711Alaw64k 20"; "" for an unnamed dynamic type
};

// One audio stream of a session description: where its sender wants to receive RTP.
struct SdpMedia {
    Endpoint address;
    std::vector<Codec> codecs;
    Endpoint rtcp;  // from "a=rtcp:" (RFC 3605), else the RTP port + 1; port 0 when there is none
};

// The audio media of `sdp` that can carry RTP: port not 0, an IPv4 connection address that is
// not 0.0.0.0, taken from the media's own c= line or else the session's.
std::vector<SdpMedia> parseSdpAudio(std::string_view sdp);

// The RFC 4733 event codec ("telephone-event/8000") among `codecs`, or none.
const Codec* telephoneEvent(const std::vector<Codec>& codecs);

// The RTP clock rate of a codec named as in an rtpmap ("opus/48000/2") or by H.323
// ("g711Alaw64k 20"): the rate the name gives, else 8000. G.722's RTP clock is 8000 (RFC 3551)
// and opus's 48000 whatever the name says.
int clockRate(std::string_view codecName);

// The name of a payload type that needs no rtpmap line, or "" for others.
std::string staticPayloadName(int payloadType);

}  // namespace recorder
