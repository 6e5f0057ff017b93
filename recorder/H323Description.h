#pragma once

#include "Endpoint.h"

#include <string>
#include <string_view>
#include <vector>

namespace recorder {

// Q.931 message types that call following acts on.
enum H323MessageType { kH323Setup = 5, kH323ReleaseComplete = 90 };

struct H323Media {
    Endpoint address;
    std::string codec;  // "g711Alaw64k 20", or "" when the description names none
};

// What the sniffer's text description of one H.323 signalling segment says.
struct H323Description {
    int type = -1;                 // "t:"
    std::string callReference;     // "r:"
    std::string callId;            // "c:"
    std::string caller;            // "s:"
    std::string callee;            // "d:"
    std::vector<H323Media> media;  // every "rtp:" address of the "m:" and "a:" lines
};

// `text` is a frame payload: lines ended by "\n", the last one by a zero byte instead.
H323Description parseH323Description(std::string_view text);

}  // namespace recorder
