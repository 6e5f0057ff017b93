// Call-signalling messages built with the toolkit's encoder: the set the
// tshark oracle checks, and the builders the traffic generator and the
// sniffer's H.323 tests start from.

#ifndef H323_TESTS_MESSAGES_H
#define H323_TESTS_MESSAGES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "h323/Per.h"
#include "h323/Q931.h"

namespace h323::test {

struct Message {
    std::string name;
    std::vector<uint8_t> bytes;  // a Q.931 message, user-user element included
};

// One Q.931 message with an H323-UserInformation in its user-user element.
class Signal {
public:
    Signal(uint8_t messageType, const char* body, unsigned callReference = 0x1234, bool fromDestination = false);

    per::Builder::Slot pdu() { return info_.root()["h323_uu_pdu"]; }
    per::Builder::Slot body() { return pdu()["h323_message_body"].chosen(); }
    Q931& q931() { return q931_; }
    Message message(std::string name);
    std::string encoded();  // message() without a name

private:
    Q931 q931_;
    per::Builder info_;
};

// Common contents.
void setIpv4(per::Builder::Slot transportAddress, const char* dotted, unsigned port);
std::string ipv4Octets(const char* dotted);
std::string guid(uint8_t seed);

// Builders of whole messages, call reference 0x1000 + seed:
// a Setup with its mandatory parts, Q.931 numbers 5551000 -> 5552000 and
// a call id; and an answer of `type` carrying only its mandatory parts and
// a call id.
Signal setup(uint8_t seed);
Signal answer(uint8_t type, const char* body, uint8_t seed, bool fromDestination = true);
void setCallId(per::Builder::Slot uuie, uint8_t seed);

// The call-signalling messages the oracle compares with tshark.
std::vector<Message> signallingMessages();

// RFC 1006 framing.
std::string tpkt(std::string_view pdu);

}  // namespace h323::test

#endif
