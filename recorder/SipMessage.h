#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

// The parts of a SIP message that call following needs.
struct SipMessage {
    bool isRequest = false;
    std::string method;  // requests
    int status = 0;      // responses
    std::string callId;
    std::string cseqMethod;
    std::string from, to;          // the URIs of the From and To headers
    std::string fromName, toName;  // their display names, unquoted; empty when they have none
    std::string fromTag, toTag;
    std::string_view sdp;  // the body when it is application/sdp; points into the parsed text
};

// Returns nothing when the text has no SIP start line.
std::optional<SipMessage> parseSip(std::string_view text);

}  // namespace recorder
